// The window of a process that gets no further thread.

#include <atomic>
#include <cerrno>
#include <cstring>

#include <dlfcn.h>
#include <pthread.h>
#include <QPushButton>

#include "tests/app/window_test.h"

using namespace stalwick;
using namespace stalwick::test;

namespace {

std::atomic<bool> refusing{false};

}  // namespace

// Stands before the system's, also for the libraries.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*start)(void*), void* argument) noexcept {
    if (refusing) return EAGAIN;
    static const auto next =
        reinterpret_cast<decltype(&pthread_create)>(::dlsym(RTLD_NEXT, "pthread_create"));
    return next(thread, attributes, start, argument);
}

class ThreadRefusalTest : public QObject {
    Q_OBJECT
  private slots:
    void ConversionThatGetsNoThreadSaysSoAndCanBeStartedAgain();
};

void ThreadRefusalTest::ConversionThatGetsNoThreadSaysSoAndCanBeStartedAgain() {
    TestWindow window;
    window.dialog.SelectFiles({window.AddRecording(L"a.ord", 20)});
    auto* start = Find<QPushButton>(window.dialog, ControlId::kCreateNewFiles);
    start->setFocus();
    refusing = true;
    window.ClickStart();
    refusing = false;

    QVERIFY(!window.dialog.IsConverting());
    QVERIFY(window.dialog.isEnabled());
    QVERIFY(!window.Progress()->isVisible());
    QCOMPARE(window.Progress()->TimerId(), 0);
    const auto message = TakeMessage();
    QVERIFY(message);
    QCOMPARE(message->caption, "Veltrosyn Stalwick");
    QCOMPARE(message->icon, QMessageBox::Critical);
    QCOMPARE(message->text, QStringLiteral("The conversion could not be started: %1")
                                .arg(QString::fromLocal8Bit(std::strerror(EAGAIN))));
    QCOMPARE(window.dialog.focusWidget(), start);
    QCOMPARE(NamesIn(window.InputDirectory()), std::set<std::string>({"a.ord"}));

    window.ClickStart();
    QCOMPARE(TakeMessage().value_or(SeenMessage{}).text, "Processing complete");
}

STALWICK_WINDOW_TEST_MAIN(ThreadRefusalTest)

#include "thread_refusal_test.moc"
