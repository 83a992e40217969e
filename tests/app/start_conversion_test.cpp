// SPDX-License-Identifier: BSD-3-Clause
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "app/qt_text.h"
#include "platform/paths.h"
#include "tests/app/window_test.h"
#include "tests/support/engine_run.h"
#include "tests/support/ord_builder.h"

using namespace stalwick;
using namespace stalwick::test;

class StartConversionTest : public QObject {
    Q_OBJECT
  private slots:
    void ThreeFilesAreConvertedAndProcessingIsComplete();
    void CheckBoxesChooseTheOutputs();
    void EmptySelectionIsCompleteAtOnce();
    void FailingSecondFileKeepsTheFirstAndNeverOpensTheThird();
    void FailureIsOneLineWhateverTheFilesName();
    void FailureWithoutATextShowsNoDash();
    void ErrorTextOfAnEarlierFailureIsLeftOver();
    void CanceledJobReportsItAndNeverThatItIsComplete();
    void CancelInTheFirstFileLeavesLaterFilesWithoutData();
    void MissingOutputDirectoryIsCreated();
    void DialogIsDisabledAndProgressShownWhileConverting();
    void EnableHideAndTextComeInThatOrder();
    void WorkerDoesNotWaitForTheMessageBox();
    void StartResetsTheCancelOfTheLastJob();
    void DetailsAreShownByTheButton();
    void DetailsOfAnIncompleteOutputAreOpen();
    void SecondConversionUsesTheSameProgressDialog();
    void FocusComesBackAfterTheConversion();
    void NonUtf8AndWideNamesAreConverted();
};

// The recording's output directory, byte for byte.
#define VERIFY_OUTPUTS(window, name, outputDirectory, ...)                                         \
    do {                                                                                           \
        const auto same =                                                                          \
            SameFiles((window).Outputs(name, outputDirectory),                                     \
                      (window).Reference(name, outputDirectory __VA_OPT__(, ) __VA_ARGS__).files); \
        QVERIFY2(same, same.message());                                                            \
    } while (false)

namespace {

bool Exists(const TestWindow& window, const std::wstring& name) {
    return test::Exists(window.PathOf(name));
}

}  // namespace

void StartConversionTest::ThreeFilesAreConvertedAndProcessingIsComplete() {
    TestWindow window;
    for (const wchar_t* name : {L"a.ord", L"b.ord", L"c.ord"}) window.AddRecording(name, 20);
    window.SelectInputFiles({"a.ord", "b.ord", "c.ord"});
    window.ClickStart();

    const auto message = TakeMessage();
    QVERIFY(message);
    QCOMPARE(message->text, "Processing complete");
    QCOMPARE(message->caption, "Veltrosyn Stalwick");
    QCOMPARE(message->icon, QMessageBox::NoIcon);
    QCOMPARE(message->buttons, QMessageBox::Ok);
    QCOMPARE(message->owner, &window.dialog);
    QCOMPARE(message->details, "");
    for (const wchar_t* name : {L"a.ord", L"b.ord", L"c.ord"}) {
        VERIFY_OUTPUTS(window, name, window.InputDirectory());
    }
}

void StartConversionTest::CheckBoxesChooseTheOutputs() {
    TestWindow window;
    window.AddRecording(L"a.ord", 20);
    window.SelectInputFiles({"a.ord"});
    for (const ControlId box :
         {ControlId::kCscOutput, ControlId::kBaseImu, ControlId::kRawDataFileOutput}) {
        Find<QCheckBox>(window.dialog, box)->click();
    }
    window.ClickStart();

    QVERIFY(TakeMessage());
    ReferenceConvertOptions options;
    options.csc = false;
    options.baseImu = true;
    options.raw = true;
    VERIFY_OUTPUTS(window, L"a.ord", window.InputDirectory(), options);
}

void StartConversionTest::EmptySelectionIsCompleteAtOnce() {
    TestWindow window;
    Find<QLineEdit>(window.dialog, ControlId::kOutputDirectory)
        ->setText(ToQString(window.InputDirectory()));
    window.dialog.StartConversion();
    const auto message = TakeMessage();
    QVERIFY(message);
    QCOMPARE(message->text, "Processing complete");
    QVERIFY(NamesIn(window.InputDirectory()).empty());
}

void StartConversionTest::FailingSecondFileKeepsTheFirstAndNeverOpensTheThird() {
    TestWindow window;
    window.AddRecording(L"a.ord", 20);
    window.AddFile(L"b.ord", "no header");
    window.AddRecording(L"c.ord", 20);
    window.SelectInputFiles({"a.ord", "b.ord", "c.ord"});
    window.ClickStart();

    const auto message = TakeMessage();
    QVERIFY(message);
    QCOMPARE(message->text, "Processing failed - Error retrieving header field -NumADChannels");
    VERIFY_OUTPUTS(window, L"a.ord", window.InputDirectory());
    QVERIFY(!Exists(window, L"c"));
}

void StartConversionTest::FailureIsOneLineWhateverTheFilesName() {
    if (kPathSeparator != L'/') QSKIP("no such names there");
    TestWindow window;
    window.dialog.SelectFiles({window.PathOf(L"a\nb.ord")});
    window.ClickStart();
    const auto message = TakeMessage();
    QVERIFY(message);
    QVERIFY(message->text.startsWith("Processing failed - "));
    QVERIFY2(message->text.contains("a\\nb.ord"), qPrintable(message->text));
    QVERIFY(!message->text.contains('\n'));
}

// A file has the name of the recording's own directory: the failure has no text.
void StartConversionTest::FailureWithoutATextShowsNoDash() {
    TestWindow window;
    window.AddRecording(L"a.ord", 20);
    window.AddFile(L"a", "in the way");
    window.SelectInputFiles({"a.ord"});
    window.ClickStart();
    const auto message = TakeMessage();
    QVERIFY(message);
    QCOMPARE(message->text, "Processing failed");
    QVERIFY(message->details.contains("cannot create directory"));
}

void StartConversionTest::ErrorTextOfAnEarlierFailureIsLeftOver() {
    TestWindow window;
    window.AddFile(L"bad.ord", "no header");
    window.AddRecording(L"a.ord", 20);
    window.AddFile(L"a", "in the way");
    window.SelectInputFiles({"bad.ord"});
    window.ClickStart();
    QVERIFY(TakeMessage());
    window.SelectInputFiles({"a.ord"});
    window.ClickStart();
    const auto message = TakeMessage();
    QVERIFY(message);
    QCOMPARE(message->text, "Processing failed - Error retrieving header field -NumADChannels");
}

void StartConversionTest::CanceledJobReportsItAndNeverThatItIsComplete() {
    TestWindow window;
    window.AddRecording(L"a.ord", 300);
    window.SelectInputFiles({"a.ord"});
    window.gate.Allow(2);  // the header and one block
    window.ClickStart();
    const QString expected = QStringLiteral("Processing record %1").arg(PacketsInFirstBlock(300));
    QTRY_COMPARE_WITH_TIMEOUT(window.RecordLabel(), expected, kPatienceMs);
    Click(*window.Progress(), ControlId::kCancel);
    window.gate.AllowAll();

    const auto message = TakeMessage();
    QVERIFY(message);
    QCOMPARE(message->text, "Data processing canceled.");
    // The block whose read was waiting is still converted; everything written is whole.
    VERIFY_OUTPUTS(window, L"a.ord", window.InputDirectory(), {}, 2);
}

void StartConversionTest::CancelInTheFirstFileLeavesLaterFilesWithoutData() {
    TestWindow window;
    window.AddRecording(L"a.ord", 300);
    window.AddRecording(L"b.ord", 300);
    window.SelectInputFiles({"a.ord", "b.ord"});
    window.gate.Allow(2);
    window.ClickStart();
    QTRY_VERIFY_WITH_TIMEOUT(
        window.RecordLabel().endsWith(QString::number(PacketsInFirstBlock(300))), kPatienceMs);
    Click(*window.Progress(), ControlId::kCancel);
    window.gate.AllowAll();
    const auto message = TakeMessage();
    QVERIFY(message);
    QCOMPARE(message->text, "Data processing canceled.");
    VERIFY_OUTPUTS(window, L"b.ord", window.InputDirectory(), {}, 0);
}

void StartConversionTest::MissingOutputDirectoryIsCreated() {
    TestWindow window;
    window.AddRecording(L"a.ord", 20);
    window.SelectInputFiles({"a.ord"});
    const std::wstring output = window.directory.Path(L"new");
    Find<QLineEdit>(window.dialog, ControlId::kOutputDirectory)->setText(ToQString(output));
    window.ClickStart();
    const auto message = TakeMessage();
    QVERIFY(message);
    QCOMPARE(message->text, "Processing complete");
    VERIFY_OUTPUTS(window, L"a.ord", output);
}

void StartConversionTest::DialogIsDisabledAndProgressShownWhileConverting() {
    TestWindow window;
    window.AddRecording(L"a.ord", 20);
    window.SelectInputFiles({"a.ord"});
    window.gate.Allow(0);
    window.ClickStart();
    QVERIFY(window.dialog.IsConverting());
    QVERIFY(!window.dialog.isEnabled());
    QVERIFY(window.Progress()->isVisible());
    QVERIFY(!window.Progress()->isModal());
    QVERIFY(Find<QPushButton>(*window.Progress(), ControlId::kCancel)->isEnabled());
    window.ClickStart();  // a click on a disabled window starts nothing
    window.gate.AllowAll();
    QVERIFY(TakeMessage());
    QVERIFY(window.dialog.isEnabled());
    QVERIFY(!window.Progress()->isVisible());
    QVERIFY(!Exists(window, L"a/Events_01.vev"));
}

namespace {

// Records what happens to the windows, in order.
class EventRecorder : public QObject {
  public:
    QStringList seen;

    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::EnabledChange && qobject_cast<StalwickDlg*>(object)) {
            seen += qobject_cast<QWidget*>(object)->isEnabled() ? "enable" : "disable";
        }
        if (event->type() == QEvent::Show && qobject_cast<ProgressDlg*>(object)) seen += "show";
        if (event->type() == QEvent::Hide && qobject_cast<ProgressDlg*>(object)) seen += "hide";
        if (event->type() == QEvent::Show && qobject_cast<QMessageBox*>(object)) seen += "text";
        return false;
    }
};

}  // namespace

void StartConversionTest::EnableHideAndTextComeInThatOrder() {
    TestWindow window;
    window.AddRecording(L"a.ord", 20);
    window.SelectInputFiles({"a.ord"});
    EventRecorder recorder;
    qApp->installEventFilter(&recorder);
    window.ClickStart();
    QVERIFY(TakeMessage());
    QCOMPARE(recorder.seen, QStringList({"disable", "show", "enable", "hide", "text"}));
}

// The box of the first conversion stays open while a second one runs to its end.
void StartConversionTest::WorkerDoesNotWaitForTheMessageBox() {
    TestWindow window;
    window.AddRecording(L"a.ord", 20);
    window.SelectInputFiles({"a.ord"});
    window.ClickStart();
    QTRY_VERIFY_WITH_TIMEOUT(!window.dialog.IsConverting(), kPatienceMs);
    window.dialog.StartConversion();
    QTRY_VERIFY_WITH_TIMEOUT(!window.dialog.IsConverting(), kPatienceMs);
    QVERIFY(Exists(window, L"a/Events_01.vev"));
    QVERIFY(TakeMessage());
    QVERIFY(TakeMessage());
}

void StartConversionTest::StartResetsTheCancelOfTheLastJob() {
    TestWindow window;
    window.AddRecording(L"a.ord", 300);
    window.SelectInputFiles({"a.ord"});
    window.gate.Allow(0);
    window.ClickStart();
    Click(*window.Progress(), ControlId::kCancel);
    window.gate.AllowAll();
    QCOMPARE(TakeMessage().value_or(SeenMessage{}).text, "Data processing canceled.");
    const std::wstring second = window.directory.Path(L"second");
    Find<QLineEdit>(window.dialog, ControlId::kOutputDirectory)->setText(ToQString(second));
    window.ClickStart();
    QCOMPARE(TakeMessage().value_or(SeenMessage{}).text, "Processing complete");
    VERIFY_OUTPUTS(window, L"a.ord", second);
}

void StartConversionTest::DetailsAreShownByTheButton() {
    TestWindow window;
    window.AddFile(L"a.ord", BuildOrdFile(Version2Header(32), {}, EncodePacket({}).substr(0, 10)));
    window.SelectInputFiles({"a.ord"});
    window.ClickStart();
    const auto message = TakeMessage();
    QVERIFY(message);
    QCOMPARE(message->text, "Processing complete");
    QVERIFY(message->details.contains("10 trailing bytes"));
    QVERIFY(!message->detailsOpen);
}

void StartConversionTest::DetailsOfAnIncompleteOutputAreOpen() {
    TestWindow window;
    window.AddFile(L"a.ord", "no header");
    window.SelectInputFiles({"a.ord"});
    window.ClickStart();
    const auto message = TakeMessage();
    QVERIFY(message);
    QVERIFY(message->details.contains("not converted"));
    QVERIFY(message->detailsOpen);
}

void StartConversionTest::SecondConversionUsesTheSameProgressDialog() {
    TestWindow window;
    window.AddRecording(L"a.ord", 300);
    window.SelectInputFiles({"a.ord"});
    const ProgressDlg* const first = window.Progress();
    QVERIFY(first != nullptr);
    QVERIFY(!first->isVisible());
    for (int run = 0; run < 2; ++run) {
        window.gate.Allow(2);
        window.ClickStart();
        QVERIFY(first->isVisible());
        QCOMPARE(window.RecordLabel(), "");
        QTRY_VERIFY_WITH_TIMEOUT(
            window.RecordLabel().endsWith(QString::number(PacketsInFirstBlock(300))), kPatienceMs);
        window.gate.AllowAll();
        QVERIFY(TakeMessage());
        QVERIFY(!first->isVisible());
        QCOMPARE(window.dialog.findChildren<ProgressDlg*>().size(), 1);
    }
}

void StartConversionTest::FocusComesBackAfterTheConversion() {
    TestWindow window;
    window.AddRecording(L"a.ord", 20);
    window.SelectInputFiles({"a.ord"});
    auto* start = Find<QPushButton>(window.dialog, ControlId::kCreateNewFiles);
    start->setFocus();
    window.ClickStart();
    QVERIFY(TakeMessage());
    QCOMPARE(window.dialog.focusWidget(), start);
}

void StartConversionTest::NonUtf8AndWideNamesAreConverted() {
    TestWindow window;
    const std::wstring wide = window.AddRecording(L"\u00B5\u6E2C\u5B9A \U0001F400.ord", 20);
    QVERIFY(Drop(window.dialog, {QUrl::fromLocalFile(ToQString(wide))}));
    window.ClickStart();
    QCOMPARE(TakeMessage().value_or(SeenMessage{}).text, "Processing complete");
    VERIFY_OUTPUTS(window, L"\u00B5\u6E2C\u5B9A \U0001F400.ord", window.InputDirectory());
    if (kPathSeparator == L'\\') return;     // there every name is UTF-16
    window.AddRecording(L"\xDCB5.ord", 20);  // the byte B5 alone, not UTF-8
    QUrl url = QUrl::fromLocalFile(ToQString(window.InputDirectory()));
    QVERIFY(Drop(window.dialog, {QUrl::fromEncoded(url.toEncoded() + "/%B5.ord")}));
    window.ClickStart();
    QCOMPARE(TakeMessage().value_or(SeenMessage{}).text, "Processing complete");
    VERIFY_OUTPUTS(window, L"\xDCB5.ord", window.InputDirectory());
}

STALWICK_WINDOW_TEST_MAIN(StartConversionTest)

#include "start_conversion_test.moc"
