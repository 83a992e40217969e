// SPDX-License-Identifier: BSD-3-Clause
#include "tests/app/window_test.h"

#include <QSignalSpy>

using namespace stalwick;
using namespace stalwick::test;

class ClosingTest : public QObject {
    Q_OBJECT
  private slots:
    void IdleDialogCloses();
    void CloseWhileConvertingIsRefused();
    void CloseAfterTheConversionIsGranted();
    void CloseAfterCancelWaitsForTheWorker();
    void QuitWhileConvertingIsRefused();
    void EscapeWhileConvertingChangesNothing();
    void CloseWhileConvertingRaisesTheProgressDialog();
};

namespace {

// A conversion that waits before its first read.
struct Converting {
    Converting() {
        window.AddRecording(L"a.ord", 20);
        window.SelectInputFiles({"a.ord"});
        window.gate.Allow(0);
        window.ClickStart();
    }

    TestWindow window;
};

}  // namespace

void ClosingTest::IdleDialogCloses() {
    TestWindow window;
    QVERIFY(window.dialog.close());
    QVERIFY(!window.dialog.isVisible());
}

void ClosingTest::CloseWhileConvertingIsRefused() {
    Converting converting;
    StalwickDlg& dialog = converting.window.dialog;
    QVERIFY(!dialog.close());
    QVERIFY(dialog.isVisible());
    QVERIFY(!converting.window.Progress()->close());
    QVERIFY(converting.window.Progress()->isVisible());
    QVERIFY(dialog.IsConverting());
}

void ClosingTest::CloseAfterTheConversionIsGranted() {
    Converting converting;
    QVERIFY(!converting.window.dialog.close());
    converting.window.gate.AllowAll();
    QCOMPARE(TakeMessage().value_or(SeenMessage{}).text, "Processing complete");
    QVERIFY(converting.window.dialog.close());
}

void ClosingTest::CloseAfterCancelWaitsForTheWorker() {
    Converting converting;
    Click(*converting.window.Progress(), ControlId::kCancel);
    QVERIFY(!converting.window.dialog.close());
    converting.window.gate.AllowAll();
    QCOMPARE(TakeMessage().value_or(SeenMessage{}).text, "Data processing canceled.");
    QVERIFY(converting.window.dialog.close());
}

// How a session ends if nobody asks the program first.
void ClosingTest::QuitWhileConvertingIsRefused() {
    Converting converting;
    QSignalSpy quits(qApp, &QCoreApplication::aboutToQuit);
    QEvent quit(QEvent::Quit);
    QCoreApplication::sendEvent(qApp, &quit);
    QVERIFY(!quit.isAccepted());
    QVERIFY(converting.window.dialog.isVisible());
    QVERIFY(converting.window.Progress()->isVisible());
    QCOMPARE(quits.count(), 0);
}

void ClosingTest::EscapeWhileConvertingChangesNothing() {
    Converting converting;
    QTest::keyClick(converting.window.Progress(), Qt::Key_Escape);
    QVERIFY(converting.window.Progress()->isVisible());
    converting.window.gate.AllowAll();
    QCOMPARE(TakeMessage().value_or(SeenMessage{}).text, "Processing complete");
}

void ClosingTest::CloseWhileConvertingRaisesTheProgressDialog() {
    Converting converting;
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QVERIFY(!converting.window.dialog.close());
    QTRY_COMPARE(QApplication::activeWindow(), converting.window.Progress());
}

STALWICK_WINDOW_TEST_MAIN(ClosingTest)

#include "closing_test.moc"
