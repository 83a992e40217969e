// SPDX-License-Identifier: BSD-3-Clause
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimerEvent>

#include "app/about_dlg.h"
#include "tests/app/window_test.h"

using namespace stalwick;
using namespace stalwick::test;

class ProgressDialogTest : public QObject {
    Q_OBJECT
  private slots:
    void ControlsHaveTheirTextsAndNumbers();
    void BarIsAMarquee();
    void LabelStartsAsXAndIsEmptiedByAProcessor();
    void LabelShowsTheCountOfTheProcessor();
    void LabelShowsTheLargestCountInFull();
    void TimerRunsOnlyWhileAProcessorIsAttached();
    void SecondProcessorKeepsTheOneTimer();
    void TimerEventOfAnotherTimerChangesNothing();
    void TimerEventWithoutAProcessorChangesNothing();
    void CancelWithoutAnActionDoesNothing();
    void CancelStopsTheTimerAndThenCallsTheAction();
    void CancelIsDisabledOncePressedUntilTheNextProcessor();
    void CancelIsEnabledAndHasTheFocusInTheNextConversion();
    void NewCancelActionReplacesTheOldOne();
    void LabelStaysStillAfterCancelWhileTheWorkerContinues();
    void NumberRestartsWithEveryFile();
    void NothingThatTheUserDoesClosesIt();
    void EnterDoesNotCancel();
    void SystemMenuShowsNoAboutBoxOverIt();
    void IsCentredOnTheMainDialog();
};

namespace {

struct OpenProgress {
    OpenProgress() {
        owner.resize(600, 400);
        owner.show();
        dialog.show();
    }

    QLabel* Label() { return Find<QLabel>(dialog, ControlId::kRecordLabel); }

    QWidget owner;
    ProgressDlg dialog{&owner};
    DataProcessor processor;
};

void SendTimerEvent(QObject& target, int timerId) {
    QTimerEvent event(timerId);
    QCoreApplication::sendEvent(&target, &event);
}

}  // namespace

void ProgressDialogTest::ControlsHaveTheirTextsAndNumbers() {
    OpenProgress open;
    QCOMPARE(Find<QLabel>(open.dialog, ControlId::kProgressTitle)->text(),
             "Data conversion in progress...");
    QCOMPARE(PlainText(Find<QPushButton>(open.dialog, ControlId::kCancel)->text()), "Cancel");
    QVERIFY(Find<QProgressBar>(open.dialog, ControlId::kProgressBar));
    QCOMPARE(open.dialog.windowTitle(), "Data Conversion");
}

void ProgressDialogTest::BarIsAMarquee() {
    OpenProgress open;
    const auto* bar = Find<QProgressBar>(open.dialog, ControlId::kProgressBar);
    QCOMPARE(bar->minimum(), 0);
    QCOMPARE(bar->maximum(), 0);
}

void ProgressDialogTest::LabelStartsAsXAndIsEmptiedByAProcessor() {
    OpenProgress open;
    QCOMPARE(open.Label()->text(), "x");
    open.dialog.SetProcessor(&open.processor);
    QCOMPARE(open.Label()->text(), "");
}

void ProgressDialogTest::LabelShowsTheCountOfTheProcessor() {
    OpenProgress open;
    open.dialog.SetProcessor(&open.processor);
    QTRY_COMPARE(open.Label()->text(), "Processing record 0");
    open.processor.recordsProcessed = 1234567;
    QTRY_COMPARE(open.Label()->text(), "Processing record 1234567");
}

void ProgressDialogTest::LabelShowsTheLargestCountInFull() {
    OpenProgress open;
    open.processor.recordsProcessed = std::numeric_limits<std::uint64_t>::max();
    open.dialog.SetProcessor(&open.processor);
    QTRY_COMPARE(open.Label()->text(), "Processing record 18446744073709551615");
    QVERIFY(open.Label()->width() >= open.Label()->sizeHint().width());
}

void ProgressDialogTest::TimerRunsOnlyWhileAProcessorIsAttached() {
    OpenProgress open;
    QCOMPARE(open.dialog.TimerId(), 0);
    open.dialog.SetProcessor(&open.processor);
    QVERIFY(open.dialog.TimerId() != 0);
    open.dialog.SetProcessor(nullptr);
    QCOMPARE(open.dialog.TimerId(), 0);
    open.dialog.SetProcessor(nullptr);
    QCOMPARE(open.dialog.TimerId(), 0);
}

void ProgressDialogTest::SecondProcessorKeepsTheOneTimer() {
    OpenProgress open;
    open.dialog.SetProcessor(&open.processor);
    const int first = open.dialog.TimerId();
    DataProcessor other;
    other.recordsProcessed = 7;
    open.dialog.SetProcessor(&other);
    QCOMPARE(open.dialog.TimerId(), first);
    QCOMPARE(open.Label()->text(), "");
    QTRY_COMPARE(open.Label()->text(), "Processing record 7");
}

void ProgressDialogTest::TimerEventOfAnotherTimerChangesNothing() {
    OpenProgress open;
    open.dialog.SetProcessor(&open.processor);
    open.Label()->setText("as it was");
    SendTimerEvent(open.dialog, open.dialog.TimerId() + 1);
    QCOMPARE(open.Label()->text(), "as it was");
    SendTimerEvent(open.dialog, open.dialog.TimerId());
    QCOMPARE(open.Label()->text(), "Processing record 0");
}

void ProgressDialogTest::TimerEventWithoutAProcessorChangesNothing() {
    OpenProgress open;
    open.dialog.SetProcessor(&open.processor);
    const int timer = open.dialog.TimerId();
    open.dialog.SetProcessor(nullptr);
    open.Label()->setText("as it was");
    SendTimerEvent(open.dialog, timer);
    SendTimerEvent(open.dialog, 0);
    QCOMPARE(open.Label()->text(), "as it was");
}

void ProgressDialogTest::CancelWithoutAnActionDoesNothing() {
    OpenProgress open;
    open.dialog.SetProcessor(&open.processor);
    Click(open.dialog, ControlId::kCancel);
    QVERIFY(open.dialog.isVisible());
    QVERIFY(open.dialog.TimerId() != 0);
}

void ProgressDialogTest::CancelStopsTheTimerAndThenCallsTheAction() {
    OpenProgress open;
    open.dialog.SetProcessor(&open.processor);
    int calls = 0;
    int timerAtCall = -1;
    open.dialog.SetCancelAction([&] {
        ++calls;
        timerAtCall = open.dialog.TimerId();
    });
    Click(open.dialog, ControlId::kCancel);
    QCOMPARE(calls, 1);
    QCOMPARE(timerAtCall, 0);
    QVERIFY(open.dialog.isVisible());
}

void ProgressDialogTest::CancelIsDisabledOncePressedUntilTheNextProcessor() {
    OpenProgress open;
    const auto* cancel = Find<QPushButton>(open.dialog, ControlId::kCancel);
    int calls = 0;
    open.dialog.SetCancelAction([&] { ++calls; });
    open.dialog.SetProcessor(&open.processor);
    Click(open.dialog, ControlId::kCancel);
    QVERIFY(!cancel->isEnabled());
    Click(open.dialog, ControlId::kCancel);
    QCOMPARE(calls, 1);
    open.dialog.SetProcessor(nullptr);
    QVERIFY(!cancel->isEnabled());
    open.dialog.SetProcessor(&open.processor);
    QVERIFY(cancel->isEnabled());
}

void ProgressDialogTest::CancelIsEnabledAndHasTheFocusInTheNextConversion() {
    TestWindow window;
    window.AddRecording(L"a.ord", 5);
    window.SelectInputFiles({"a.ord"});
    auto* cancel = Find<QPushButton>(*window.Progress(), ControlId::kCancel);
    for (int run = 0; run < 2; ++run) {
        window.gate.Allow(0);
        window.ClickStart();
        QVERIFY(cancel->isEnabled());
        QCOMPARE(window.Progress()->focusWidget(), cancel);
        QTest::keyClick(cancel, Qt::Key_Space);
        QVERIFY(!cancel->isEnabled());
        window.gate.AllowAll();
        QCOMPARE(TakeMessage().value_or(SeenMessage{}).text, "Data processing canceled.");
    }
}

void ProgressDialogTest::NewCancelActionReplacesTheOldOne() {
    OpenProgress open;
    auto held = std::make_shared<int>(0);
    open.dialog.SetCancelAction([held] { ++*held; });
    QCOMPARE(held.use_count(), 2L);
    int calls = 0;
    open.dialog.SetCancelAction([&] { ++calls; });
    QCOMPARE(held.use_count(), 1L);
    Click(open.dialog, ControlId::kCancel);
    QCOMPARE(*held, 0);
    QCOMPARE(calls, 1);
}

void ProgressDialogTest::LabelStaysStillAfterCancelWhileTheWorkerContinues() {
    TestWindow window;
    window.AddRecording(L"a.ord", 300);
    window.SelectInputFiles({"a.ord"});
    window.gate.Allow(2);
    window.ClickStart();
    const QString before = QStringLiteral("Processing record %1").arg(PacketsInFirstBlock(300));
    QTRY_COMPARE_WITH_TIMEOUT(window.RecordLabel(), before, kPatienceMs);
    Click(*window.Progress(), ControlId::kCancel);
    QCOMPARE(window.Progress()->TimerId(), 0);
    window.gate.AllowAll();  // the worker converts the block for which it waits
    QVERIFY(TakeMessage());
    QCOMPARE(window.RecordLabel(), before);
}

void ProgressDialogTest::NumberRestartsWithEveryFile() {
    TestWindow window;
    window.AddRecording(L"a.ord", 300);
    window.AddRecording(L"b.ord", 200);
    window.SelectInputFiles({"a.ord", "b.ord"});
    std::uint64_t largest = 0;
    bool restarted = false;
    window.gate.Allow(1);  // the header of the first file
    window.ClickStart();
    // One read after another, so that the label is visible at each count.
    while (window.dialog.IsConverting() && !restarted) {
        QTest::qWait(60);
        const auto shown = window.RecordLabel().section(QLatin1Char(' '), -1).toULongLong();
        restarted = shown < largest;
        largest = std::max<std::uint64_t>(largest, shown);
        window.gate.Allow(1);
    }
    QVERIFY(restarted);
    QVERIFY(largest >= PacketsInFirstBlock(300));
    window.gate.AllowAll();
    QVERIFY(TakeMessage());
    QVERIFY(window.dialog.isEnabled());
}

void ProgressDialogTest::NothingThatTheUserDoesClosesIt() {
    OpenProgress open;
    open.dialog.SetProcessor(&open.processor);
    QTest::keyClick(&open.dialog, Qt::Key_Escape);
    QVERIFY(open.dialog.isVisible());
    QVERIFY(!open.dialog.close());
    QVERIFY(open.dialog.isVisible());
    QVERIFY(open.dialog.TimerId() != 0);
}

void ProgressDialogTest::EnterDoesNotCancel() {
    OpenProgress open;
    int calls = 0;
    open.dialog.SetCancelAction([&] { ++calls; });
    auto* cancel = Find<QPushButton>(open.dialog, ControlId::kCancel);
    QCOMPARE(open.dialog.focusWidget(), cancel);
    QTest::keyClick(cancel, Qt::Key_Return);
    QCOMPARE(calls, 0);
    QTest::keyClick(cancel, Qt::Key_Space);
    QCOMPARE(calls, 1);
}

// Being modal, the box would make "Cancel" unreachable.
void ProgressDialogTest::SystemMenuShowsNoAboutBoxOverIt() {
    TestWindow window;
    window.AddRecording(L"a.ord", 5);
    window.SelectInputFiles({"a.ord"});
    window.gate.Allow(0);
    window.ClickStart();
    bool shown = false;
    QTimer watch;
    connect(&watch, &QTimer::timeout, this, [&shown] {
        auto* about = qobject_cast<CAboutDlg*>(QApplication::activeModalWidget());
        if (about == nullptr) return;
        shown = true;
        about->accept();
    });
    watch.start(1);
    QVERIFY(window.dialog.OnSysCommand(16));
    QVERIFY(!shown);
    window.gate.AllowAll();
    QVERIFY(TakeMessage());
}

void ProgressDialogTest::IsCentredOnTheMainDialog() {
    OpenProgress open;
    open.owner.move(100, 120);
    open.dialog.move(0, 0);
    open.dialog.SetProcessor(&open.processor);
    const QPoint off = open.dialog.frameGeometry().center() - open.owner.frameGeometry().center();
    QVERIFY(qAbs(off.x()) <= 1);
    QVERIFY(qAbs(off.y()) <= 1);
}

STALWICK_WINDOW_TEST_MAIN(ProgressDialogTest)

#include "progress_dialog_test.moc"
