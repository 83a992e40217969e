// SPDX-License-Identifier: BSD-3-Clause
#include <QCheckBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTreeWidget>

#include "app/about_dlg.h"
#include "app/qt_text.h"
#include "tests/app/window_test.h"
#include "tests/support/ord_builder.h"

using namespace stalwick;
using namespace stalwick::test;

// One test for each notification that the main dialog handles, and for its consequences.
class MainDialogTest : public QObject {
    Q_OBJECT
  private slots:
    void SystemCommandShowsTheAboutBox();
    void OtherSystemCommandsAreLeftToTheToolkit();
    void HelpMenuShowsTheAboutBox();
    void PaintDrawsEveryControl();
    void MinimisedWindowIsShownByTheIcon();
    void ClickOnSelectInputFilesFillsTheList();
    void ClickOnSelectOutputDirectoryFillsItsBox();
    void ClickOnCreateNewFilesStartsAConversion();
    void ClickOnAFileShowsItsHeader();
    void ChangeOfTheOutputDirectoryUpdatesTheButtons();
    void ChangeOfAListItemUpdatesTheButtons();
    void ClickOnClearListEmptiesTheList();

    void StartsWithBothButtonsDisabledAndCscChecked();
    void ButtonsNeedAFileAndAnOutputDirectory();
    void ClearListDisablesBothButtonsAndKeepsTheTexts();
    void SelectionAfterClearListEnablesTheButtonsAgain();
    void ClickOnAFileThatCannotBeOpenedKeepsTheHeader();
    void ClickOnAFileDeletedAfterItWasSelectedKeepsTheHeader();
    void ClickBelowTheLastItemDoesNothing();
    void IndexesOutsideTheListAreRefused();
    void EnterOnAFileShowsItsHeader();
    void HeaderViewShowsOneLineALine_data();
    void HeaderViewShowsOneLineALine();
    void HeaderViewShowsLinesOfAnyLength();
    void HeaderBoxIsFixedPitchAndReadOnly();
    void ListHasOneColumnAndSingleSelection();
};

namespace {

QPushButton* StartButton(TestWindow& window) {
    return Find<QPushButton>(window.dialog, ControlId::kCreateNewFiles);
}

QPushButton* ClearButton(TestWindow& window) {
    return Find<QPushButton>(window.dialog, ControlId::kClearList);
}

QLineEdit* OutputDirectory(TestWindow& window) {
    return Find<QLineEdit>(window.dialog, ControlId::kOutputDirectory);
}

QLineEdit* InputDirectory(TestWindow& window) {
    return Find<QLineEdit>(window.dialog, ControlId::kInputDirectory);
}

QTreeWidget* List(TestWindow& window) {
    return Find<QTreeWidget>(window.dialog, ControlId::kFileList);
}

QStringList ListedNames(TestWindow& window) {
    QStringList names;
    for (int i = 0; i < List(window)->topLevelItemCount(); ++i) {
        names += List(window)->topLevelItem(i)->text(0);
    }
    return names;
}

}  // namespace

void MainDialogTest::SystemCommandShowsTheAboutBox() {
    TestWindow window;
    // The system uses a command's lowest four bits for itself.
    for (const std::uint32_t command : {16U, 0x1FU}) {
        bool seen = false;
        WhenShown<CAboutDlg>([&](CAboutDlg& about) {
            seen = about.isModal();
            about.accept();
        });
        QVERIFY(window.dialog.OnSysCommand(command));
        QVERIFY(seen);
    }
}

void MainDialogTest::OtherSystemCommandsAreLeftToTheToolkit() {
    TestWindow window;
    constexpr std::uint32_t kClose = 0xF060;
    for (const std::uint32_t command : {0U, 15U, 32U, kClose}) {
        QVERIFY(!window.dialog.OnSysCommand(command));
    }
}

void MainDialogTest::HelpMenuShowsTheAboutBox() {
    TestWindow window;
    auto* menuBar = window.dialog.findChild<QMenuBar*>();
    QVERIFY(menuBar != nullptr);
    QCOMPARE(PlainText(menuBar->actions().constFirst()->text()), "Help");
    QAction* about = menuBar->actions().constFirst()->menu()->actions().constFirst();
    QCOMPARE(about->text(), "&About Stalwick...");
    bool seen = false;
    WhenShown<CAboutDlg>([&](CAboutDlg& box) {
        seen = box.isModal();
        box.accept();
    });
    about->trigger();
    QVERIFY(seen);
}

void MainDialogTest::PaintDrawsEveryControl() {
    TestWindow window;
    const QImage image = window.dialog.grab().toImage();
    const QRgb background = window.dialog.palette().color(QPalette::Window).rgb();
    int controls = 0;
    for (QWidget* control : window.dialog.findChildren<QWidget*>()) {
        if (control->window() != &window.dialog || control->objectName().toInt() < 1000) continue;
        const QRect place(control->mapTo(&window.dialog, QPoint()), control->size());
        bool drawn = false;
        for (int y = place.top(); y <= place.bottom(); ++y) {
            for (int x = place.left(); x <= place.right(); ++x) {
                drawn |= image.pixel(x, y) != background;
            }
        }
        QVERIFY2(drawn, qPrintable(control->objectName()));
        ++controls;
    }
    QCOMPARE(controls, 14);
}

void MainDialogTest::MinimisedWindowIsShownByTheIcon() {
    TestWindow window;
    QCOMPARE(window.dialog.windowIcon().availableSizes().size(), 7);
    QVERIFY(!window.dialog.windowIcon().pixmap(32).isNull());
    window.dialog.showMinimized();
    QVERIFY(window.dialog.isMinimized());
    window.dialog.showNormal();
    QVERIFY(window.dialog.isVisible());
}

void MainDialogTest::ClickOnSelectInputFilesFillsTheList() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.AddRecording(L"b.ord", 1);
    window.SelectInputFiles({"b.ord", "a.ord"});
    QCOMPARE(ListedNames(window), QStringList({"b.ord", "a.ord"}));
    QCOMPARE(InputDirectory(window)->text(), ToQString(window.InputDirectory()));
}

void MainDialogTest::ClickOnSelectOutputDirectoryFillsItsBox() {
    TestWindow window;
    const std::wstring output = window.directory.Path(L"out");
    MakeDirectory(output);
    window.SelectOutputDirectory(output);
    QCOMPARE(OutputDirectory(window)->text(), ToQString(output));
    QCOMPARE(InputDirectory(window)->text(), "");
}

void MainDialogTest::ClickOnCreateNewFilesStartsAConversion() {
    TestWindow window;
    window.AddRecording(L"a.ord", 5);
    window.SelectInputFiles({"a.ord"});
    window.ClickStart();
    QVERIFY(window.dialog.IsConverting());
    QCOMPARE(TakeMessage().value_or(SeenMessage{}).text, "Processing complete");
}

void MainDialogTest::ClickOnAFileShowsItsHeader() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.AddFile(L"b.ord", BuildOrdFile(Version2Header(64), {}));
    window.SelectInputFiles({"a.ord", "b.ord"});
    QCOMPARE(window.HeaderText(), "");
    window.ClickListItem(1);
    QVERIFY(window.HeaderText().contains("-NumADChannels 64\n"));
    window.ClickListItem(0);
    QVERIFY(window.HeaderText().contains("-NumADChannels 32\n"));
}

void MainDialogTest::ChangeOfTheOutputDirectoryUpdatesTheButtons() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.SelectInputFiles({"a.ord"});
    OutputDirectory(window)->clear();
    QVERIFY(!StartButton(window)->isEnabled());
    OutputDirectory(window)->setText("x");
    QVERIFY(StartButton(window)->isEnabled());
}

void MainDialogTest::ChangeOfAListItemUpdatesTheButtons() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.SelectInputFiles({"a.ord"});
    StartButton(window)->setEnabled(false);  // out of date on purpose
    window.ClickListItem(0);                 // the selection changes
    QVERIFY(StartButton(window)->isEnabled());
    ClearButton(window)->setEnabled(false);
    List(window)->topLevelItem(0)->setText(0, "other");
    QVERIFY(ClearButton(window)->isEnabled());
}

void MainDialogTest::ClickOnClearListEmptiesTheList() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.AddRecording(L"b.ord", 1);
    window.SelectInputFiles({"a.ord", "b.ord"});
    Click(window.dialog, ControlId::kClearList);
    QCOMPARE(List(window)->topLevelItemCount(), 0);
    window.dialog.OnFileListClick(0);  // no path remains either
    QCOMPARE(window.HeaderText(), "");
}

void MainDialogTest::StartsWithBothButtonsDisabledAndCscChecked() {
    TestWindow window;
    QVERIFY(!StartButton(window)->isEnabled());
    QVERIFY(!ClearButton(window)->isEnabled());
    QVERIFY(Find<QCheckBox>(window.dialog, ControlId::kCscOutput)->isChecked());
    for (const ControlId id : {ControlId::kBaseImu, ControlId::kAfeImu, ControlId::kUltrasonic,
                               ControlId::kRawDataFileOutput}) {
        QVERIFY(!Find<QCheckBox>(window.dialog, id)->isChecked());
    }
    QVERIFY(!window.Progress()->isVisible());
}

void MainDialogTest::ButtonsNeedAFileAndAnOutputDirectory() {
    TestWindow window;
    OutputDirectory(window)->setText("somewhere");  // only a directory
    QVERIFY(!StartButton(window)->isEnabled());
    QVERIFY(!ClearButton(window)->isEnabled());
    window.AddRecording(L"a.ord", 1);
    window.SelectInputFiles({"a.ord"});
    QVERIFY(StartButton(window)->isEnabled());
    QVERIFY(ClearButton(window)->isEnabled());
    OutputDirectory(window)->clear();  // only a file
    QVERIFY(!StartButton(window)->isEnabled());
    QVERIFY(!ClearButton(window)->isEnabled());
}

void MainDialogTest::ClearListDisablesBothButtonsAndKeepsTheTexts() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.SelectInputFiles({"a.ord"});
    window.ClickListItem(0);
    const QString header = window.HeaderText();
    Click(window.dialog, ControlId::kClearList);
    QVERIFY(!StartButton(window)->isEnabled());
    QVERIFY(!ClearButton(window)->isEnabled());
    QVERIFY(!header.isEmpty());
    QCOMPARE(window.HeaderText(), header);
    QCOMPARE(OutputDirectory(window)->text(), ToQString(window.InputDirectory()));
    QCOMPARE(InputDirectory(window)->text(), ToQString(window.InputDirectory()));
}

void MainDialogTest::SelectionAfterClearListEnablesTheButtonsAgain() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.SelectInputFiles({"a.ord"});
    Click(window.dialog, ControlId::kClearList);
    window.SelectInputFiles({"a.ord"});  // the same directory: its box does not change
    QVERIFY(StartButton(window)->isEnabled());
    QVERIFY(ClearButton(window)->isEnabled());
}

void MainDialogTest::ClickOnAFileThatCannotBeOpenedKeepsTheHeader() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.AddFile(L"bad.ord", "no header field in here");
    window.SelectInputFiles({"a.ord", "bad.ord"});
    window.ClickListItem(0);
    const QString header = window.HeaderText();
    window.ClickListItem(1);
    QVERIFY(!header.isEmpty());
    QCOMPARE(window.HeaderText(), header);
    QVERIFY(QApplication::activePopupWidget() == nullptr);
    QVERIFY(window.dialog.findChildren<QMessageBox*>().isEmpty());
}

void MainDialogTest::ClickOnAFileDeletedAfterItWasSelectedKeepsTheHeader() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    const std::wstring gone = window.AddRecording(L"b.ord", 1);
    window.SelectInputFiles({"a.ord", "b.ord"});
    RemoveFile(gone);
    window.ClickListItem(0);
    const QString header = window.HeaderText();
    window.ClickListItem(1);
    QVERIFY(!header.isEmpty());
    QCOMPARE(window.HeaderText(), header);
    QVERIFY(window.dialog.findChildren<QMessageBox*>().isEmpty());
}

void MainDialogTest::ClickBelowTheLastItemDoesNothing() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.SelectInputFiles({"a.ord"});
    QTreeWidget* list = List(window);
    const QPoint below(20, list->viewport()->height() - 5);
    QVERIFY(list->itemAt(below) == nullptr);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, below);
    QCOMPARE(window.HeaderText(), "");
}

void MainDialogTest::IndexesOutsideTheListAreRefused() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.SelectInputFiles({"a.ord"});
    for (const int index :
         {-1, 1, 2, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        window.dialog.OnFileListClick(index);
        QCOMPARE(window.HeaderText(), "");
    }
    window.dialog.OnFileListClick(0);
    QVERIFY(!window.HeaderText().isEmpty());
}

void MainDialogTest::EnterOnAFileShowsItsHeader() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.SelectInputFiles({"a.ord"});
    List(window)->setFocus();
    QTest::keyClick(List(window), Qt::Key_Down);
    QTest::keyClick(List(window), Qt::Key_Return);
    QVERIFY(window.HeaderText().contains("-NumADChannels 32\n"));
    QVERIFY(!window.dialog.IsConverting());
}

void MainDialogTest::HeaderViewShowsOneLineALine_data() {
    QTest::addColumn<QByteArray>("lineEnd");
    QTest::newRow("CR LF") << QByteArray("\r\n");
    QTest::newRow("LF") << QByteArray("\n");
    QTest::newRow("CR") << QByteArray("\r");
}

void MainDialogTest::HeaderViewShowsOneLineALine() {
    QFETCH(QByteArray, lineEnd);
    OrdHeaderText header = Version2Header(32);
    const std::string unixText = header.SetLineEnd("\n").Text();
    header.SetLineEnd(lineEnd.toStdString());
    TestWindow window;
    window.AddFile(L"a.ord", BuildOrdFile(header, {}));
    window.SelectInputFiles({"a.ord"});
    window.ClickListItem(0);
    QCOMPARE(window.HeaderText(), QString::fromStdString(unixText));
    QCOMPARE(Find<QPlainTextEdit>(window.dialog, ControlId::kFileHeader)->blockCount(),
             static_cast<int>(std::count(unixText.begin(), unixText.end(), '\n')) + 1);
}

void MainDialogTest::HeaderViewShowsLinesOfAnyLength() {
    TestWindow window;
    OrdHeaderText header = Version2Header(32);
    const std::string line = "## " + std::string(12000, 'x');
    header.AddLine(line);
    window.AddFile(L"a.ord", BuildOrdFile(header, {}));
    window.SelectInputFiles({"a.ord"});
    window.ClickListItem(0);
    QVERIFY(window.HeaderText().contains(QString::fromStdString(line)));
}

void MainDialogTest::HeaderBoxIsFixedPitchAndReadOnly() {
    TestWindow window;
    auto* box = Find<QPlainTextEdit>(window.dialog, ControlId::kFileHeader);
    QVERIFY(box->isReadOnly());
    QCOMPARE(box->fontMetrics().horizontalAdvance("iiii"),
             box->fontMetrics().horizontalAdvance("WWWW"));
    QTest::keyClicks(box, "typed");
    QCOMPARE(window.HeaderText(), "");
}

void MainDialogTest::ListHasOneColumnAndSingleSelection() {
    TestWindow window;
    QTreeWidget* list = List(window);
    QCOMPARE(list->columnCount(), 1);
    QCOMPARE(list->headerItem()->text(0), "Filename");
    QVERIFY(list->isHeaderHidden());
    QVERIFY(list->header()->sectionSize(0) >= 260);
    QCOMPARE(list->selectionMode(), QAbstractItemView::SingleSelection);
}

STALWICK_WINDOW_TEST_MAIN(MainDialogTest)

#include "main_dialog_test.moc"
