// SPDX-License-Identifier: BSD-3-Clause

// The window of a process that cannot start another thread.

#include <cerrno>
#include <cstring>
#include <memory>

#include <QPushButton>

#include "tests/app/window_test.h"
#include "tests/support/no_threads.h"

using namespace stalwick;
using namespace stalwick::test;

class ThreadRefusalTest : public QObject {
    Q_OBJECT
  private slots:
    void ConversionWithoutAThreadReportsItAndCanBeStartedAgain();
};

void ThreadRefusalTest::ConversionWithoutAThreadReportsItAndCanBeStartedAgain() {
    TestWindow window;
    window.dialog.SelectFiles({window.AddRecording(L"a.ord", 20)});
    auto* start = Find<QPushButton>(window.dialog, ControlId::kCreateNewFiles);
    start->setFocus();
    auto scarcity = std::make_unique<NoThreads>();
    window.ClickStart();
    scarcity.reset();

    QVERIFY(!window.dialog.IsConverting());
    QVERIFY(window.dialog.isEnabled());
    QVERIFY(!window.Progress()->isVisible());
    QCOMPARE(window.Progress()->TimerId(), 0);
    const auto message = TakeMessage();
    QVERIFY(message);
    QCOMPARE(message->caption, "Veltrosyn Stalwick");
    QCOMPARE(message->icon, QMessageBox::Critical);
    QCOMPARE(message->text,
             QStringLiteral("The conversion could not be started: %1; close other programs "
                            "and start it again")
                 .arg(QString::fromLocal8Bit(std::strerror(EAGAIN))));
    QCOMPARE(window.dialog.focusWidget(), start);
    QCOMPARE(NamesIn(window.InputDirectory()), std::set<std::string>({"a.ord"}));

    window.ClickStart();
    QCOMPARE(TakeMessage().value_or(SeenMessage{}).text, "Processing complete");
}

STALWICK_WINDOW_TEST_MAIN(ThreadRefusalTest)

#include "thread_refusal_test.moc"
