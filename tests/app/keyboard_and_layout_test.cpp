// SPDX-License-Identifier: BSD-3-Clause
#include <QAccessible>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSet>
#include <QTreeWidget>

#include "app/about_dlg.h"
#include "tests/app/window_test.h"

using namespace stalwick;
using namespace stalwick::test;

class KeyboardAndLayoutTest : public QObject {
    Q_OBJECT
  private slots:
    void ControlsHaveTheirNumbersAndTexts_data();
    void ControlsHaveTheirNumbersAndTexts();
    void GroupsAndLabelsHaveTheirTexts();
    void EveryButtonAndBoxHasItsOwnMnemonic();
    void MnemonicsReachTheirControls();
    void EveryControlHasAnAccessibleName();
    void LabelsAreReadOutUnchanged();
    void EveryLabelInFrontOfABoxIsItsBuddy();
    void TabOrderIsReadingOrder();
    void FocusStartsOnSelectInputFiles();
    void EnterStartsNothingWhereverTheFocusIs();
    void EscapeDoesNotCloseTheMainDialog();
    void HeaderBoxAndFileListGrowWithTheWindow();
    void NothingIsCutOffAtTheSmallestSize();
    void WindowShrinksTo640By480AndIsWhole();
    void ReadOnlyBoxesHaveTheWindowsBackground();
    void WindowHasItsTitleAndLegalNotice();
};

namespace {

const QList<ControlId> kReadingOrder = {
    ControlId::kInputDirectory,  ControlId::kSelectInputFiles,
    ControlId::kOutputDirectory, ControlId::kSelectOutputDirectory,
    ControlId::kFileList,        ControlId::kClearList,
    ControlId::kFileHeader,      ControlId::kCscOutput,
    ControlId::kBaseImu,         ControlId::kAfeImu,
    ControlId::kUltrasonic,      ControlId::kRawDataFileOutput,
    ControlId::kCreateNewFiles};

QStringList TextsWithMnemonics(const QWidget& window) {
    QStringList texts;
    for (auto* button : window.findChildren<QAbstractButton*>()) {
        if (button->window() == &window && !button->objectName().isEmpty() &&
            !button->text().isEmpty()) {
            texts += button->text();
        }
    }
    for (auto* group : window.findChildren<QGroupBox*>()) texts += group->title();
    for (auto* label : window.findChildren<QLabel*>()) {
        if (label->buddy() != nullptr) texts += label->text();
    }
    return texts;
}

QChar Mnemonic(const QString& text) {
    const auto mark = text.indexOf(QLatin1Char('&'));
    return mark < 0 || mark + 1 >= text.size() ? QChar() : text[mark + 1].toUpper();
}

}  // namespace

void KeyboardAndLayoutTest::ControlsHaveTheirNumbersAndTexts_data() {
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("text");
    QTest::newRow("1001") << "1001"
                          << "Select Input Files";
    QTest::newRow("1003") << "1003"
                          << "Select Output Directory";
    QTest::newRow("1004") << "1004"
                          << "Create New Files";
    QTest::newRow("1005") << "1005"
                          << "CSC Output";
    QTest::newRow("1006") << "1006"
                          << "Base IMU";
    QTest::newRow("1007") << "1007"
                          << "AFE IMU";
    QTest::newRow("1008") << "1008"
                          << "Ultrasonic";
    QTest::newRow("1009") << "1009"
                          << "Raw Data File Output";
    QTest::newRow("1010") << "1010"
                          << "Clear List";
}

void KeyboardAndLayoutTest::ControlsHaveTheirNumbersAndTexts() {
    QFETCH(QString, number);
    QFETCH(QString, text);
    TestWindow window;
    auto* button = window.dialog.findChild<QAbstractButton*>(number);
    QVERIFY(button != nullptr);
    QCOMPARE(PlainText(button->text()), text);
}

void KeyboardAndLayoutTest::GroupsAndLabelsHaveTheirTexts() {
    TestWindow window;
    QStringList groups;
    for (auto* group : window.dialog.findChildren<QGroupBox*>())
        groups += PlainText(group->title());
    groups.sort();
    QCOMPARE(groups,
             QStringList({"CSC File Output", "File Header", "File List", "File Selection"}));
    QStringList labels;
    for (auto* label : window.dialog.findChildren<QLabel*>()) labels += PlainText(label->text());
    QVERIFY(labels.contains("Input Directory:"));
    QVERIFY(labels.contains("Output Directory:"));
    for (const char* box : {"1000", "1002"}) {
        auto* edit = window.dialog.findChild<QLineEdit*>(box);
        QVERIFY(edit != nullptr);
        QVERIFY(edit->isReadOnly());
    }
}

void KeyboardAndLayoutTest::EveryButtonAndBoxHasItsOwnMnemonic() {
    TestWindow window;
    QSet<QChar> taken = {QLatin1Char('H')};  // the menu "Help"
    for (const QString& text : TextsWithMnemonics(window.dialog)) {
        const QChar mnemonic = Mnemonic(text);
        QVERIFY2(!mnemonic.isNull(), qPrintable(text));
        QVERIFY2(!taken.contains(mnemonic), qPrintable(text));
        taken.insert(mnemonic);
    }
    QVERIFY(taken.size() > 14);
    QCOMPARE(Mnemonic(Find<QPushButton>(*window.Progress(), ControlId::kCancel)->text()),
             QLatin1Char('C'));
    CAboutDlg about;
    QCOMPARE(Mnemonic(Find<QPushButton>(about, ControlId::kOk)->text()), QLatin1Char('O'));
}

// A button pressed by its mnemonic acts a moment later.
void KeyboardAndLayoutTest::MnemonicsReachTheirControls() {
    TestWindow window;
    window.dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window.dialog));
    QTest::keyClick(&window.dialog, Qt::Key_U, Qt::AltModifier);
    QTRY_VERIFY(Find<QCheckBox>(window.dialog, ControlId::kUltrasonic)->isChecked());
    QTest::keyClick(&window.dialog, Qt::Key_Y, Qt::AltModifier);
    QTRY_COMPARE(window.dialog.focusWidget(),
                 Find<QLineEdit>(window.dialog, ControlId::kOutputDirectory));
    QTest::keyClick(&window.dialog, Qt::Key_F, Qt::AltModifier);
    QTRY_COMPARE(window.dialog.focusWidget(),
                 Find<QTreeWidget>(window.dialog, ControlId::kFileList));
    QTest::keyClick(&window.dialog, Qt::Key_E, Qt::AltModifier);
    QTRY_COMPARE(window.dialog.focusWidget(),
                 Find<QPlainTextEdit>(window.dialog, ControlId::kFileHeader));
}

void KeyboardAndLayoutTest::EveryControlHasAnAccessibleName() {
    TestWindow window;
    CAboutDlg about;
    int controls = 0;
    for (const QWidget* top :
         {static_cast<QWidget*>(&window.dialog), static_cast<QWidget*>(window.Progress()),
          static_cast<QWidget*>(&about)}) {
        for (QWidget* control : top->findChildren<QWidget*>()) {
            bool isNumber = false;
            control->objectName().toInt(&isNumber);
            if (!isNumber) continue;
            ++controls;
            QAccessibleInterface* seen = QAccessible::queryAccessibleInterface(control);
            QVERIFY2(!seen->text(QAccessible::Name).isEmpty(), qPrintable(control->objectName()));
        }
    }
    // The progress dialog belongs to the main dialog and occurs twice.
    QCOMPARE(controls, 15 + 2 * 4 - 1 + 6);
}

// An accessible name would hide the text.
void KeyboardAndLayoutTest::LabelsAreReadOutUnchanged() {
    TestWindow window;
    CAboutDlg about;
    Find<QLabel>(*window.Progress(), ControlId::kRecordLabel)->setText("Processing record 7");
    QStringList names;
    for (const QWidget* top :
         {static_cast<QWidget*>(&window.dialog), static_cast<QWidget*>(&about)}) {
        for (auto* label : top->findChildren<QLabel*>()) {
            if (label->text().isEmpty()) continue;
            names += QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name);
            QCOMPARE(names.last(), PlainText(label->text()));
        }
    }
    QVERIFY(names.contains("Processing record 7"));
    QCOMPARE(names.size(), 2 + 1 + 2 + 4);
}

void KeyboardAndLayoutTest::EveryLabelInFrontOfABoxIsItsBuddy() {
    TestWindow window;
    QMap<QString, QWidget*> buddies;
    for (auto* label : window.dialog.findChildren<QLabel*>()) {
        buddies[PlainText(label->text())] = label->buddy();
    }
    QCOMPARE(buddies["Input Directory:"], Find<QWidget>(window.dialog, ControlId::kInputDirectory));
    QCOMPARE(buddies["Output Directory:"],
             Find<QWidget>(window.dialog, ControlId::kOutputDirectory));
}

void KeyboardAndLayoutTest::TabOrderIsReadingOrder() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.SelectInputFiles({"a.ord"});  // every button is enabled
    window.dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window.dialog));
    Find<QWidget>(window.dialog, kReadingOrder.first())->setFocus();
    for (const ControlId id : kReadingOrder) {
        QCOMPARE(window.dialog.focusWidget()->objectName(), ObjectName(id));
        QTest::keyClick(window.dialog.focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(window.dialog.focusWidget()->objectName(), ObjectName(kReadingOrder.first()));
}

void KeyboardAndLayoutTest::FocusStartsOnSelectInputFiles() {
    TestWindow window;
    QCOMPARE(window.dialog.focusWidget(),
             Find<QWidget>(window.dialog, ControlId::kSelectInputFiles));
}

void KeyboardAndLayoutTest::EnterStartsNothingWhereverTheFocusIs() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.SelectInputFiles({"a.ord"});
    for (const ControlId id : kReadingOrder) {
        auto* control = Find<QWidget>(window.dialog, id);
        control->setFocus();
        QTest::keyClick(control, Qt::Key_Return);
        QTest::keyClick(control, Qt::Key_Enter);
        QVERIFY2(!window.dialog.IsConverting(), qPrintable(control->objectName()));
        QVERIFY(QApplication::activeModalWidget() == &window.dialog ||
                QApplication::activeModalWidget() == nullptr);
    }
    QTest::keyClick(Find<QWidget>(window.dialog, ControlId::kCreateNewFiles), Qt::Key_Space);
    QVERIFY(window.dialog.IsConverting());
    QVERIFY(TakeMessage());
}

void KeyboardAndLayoutTest::EscapeDoesNotCloseTheMainDialog() {
    TestWindow window;
    QTest::keyClick(&window.dialog, Qt::Key_Escape);
    for (const ControlId id : kReadingOrder) {
        QTest::keyClick(Find<QWidget>(window.dialog, id), Qt::Key_Escape);
    }
    QVERIFY(window.dialog.isVisible());
}

void KeyboardAndLayoutTest::HeaderBoxAndFileListGrowWithTheWindow() {
    TestWindow window;
    auto* header = Find<QWidget>(window.dialog, ControlId::kFileHeader);
    auto* list = Find<QWidget>(window.dialog, ControlId::kFileList);
    auto* start = Find<QWidget>(window.dialog, ControlId::kCreateNewFiles);
    const QSize headerBefore = header->size();
    const QSize listBefore = list->size();
    const QSize startBefore = start->size();
    window.dialog.resize(window.dialog.size() + QSize(300, 200));
    QTRY_VERIFY(header->height() >= headerBefore.height() + 190);
    QVERIFY(header->width() > headerBefore.width());
    QVERIFY(list->height() >= listBefore.height() + 190);
    QVERIFY(list->width() > listBefore.width());
    QCOMPARE(start->size(), startBefore);
}

namespace {

void VerifyNothingIsCutOff(const TestWindow& window) {
    for (auto* button : window.dialog.findChildren<QAbstractButton*>()) {
        if (button->objectName().isEmpty() || button->text().isEmpty()) continue;
        QVERIFY2(button->width() >= button->minimumSizeHint().width(), qPrintable(button->text()));
        QVERIFY2(button->height() >= button->minimumSizeHint().height(),
                 qPrintable(button->text()));
    }
    for (auto* label : window.dialog.findChildren<QLabel*>()) {
        if (label->window() != &window.dialog || label->wordWrap()) continue;
        QVERIFY2(label->width() >= label->sizeHint().width(), qPrintable(label->text()));
    }
}

}  // namespace

void KeyboardAndLayoutTest::NothingIsCutOffAtTheSmallestSize() {
    TestWindow window;
    window.dialog.resize(1, 1);
    QCoreApplication::processEvents();
    VerifyNothingIsCutOff(window);
}

// At 200 %, a screen of 1280 by 900 leaves 640 by 450 pixels minus a title bar.
void KeyboardAndLayoutTest::WindowShrinksTo640By480AndIsWhole() {
    TestWindow window;
    for (const QSize size : {QSize(640, 480), QSize(640, 420)}) {
        window.dialog.resize(size);
        QCoreApplication::processEvents();
        QCOMPARE(window.dialog.size(), size);
        VerifyNothingIsCutOff(window);
        auto* notice = Find<QLabel>(window.dialog, ControlId::kLegalNotice);
        QVERIFY(notice->height() >= notice->heightForWidth(notice->width()));
        for (const ControlId id : kReadingOrder) {
            const auto* control = Find<QWidget>(window.dialog, id);
            const QRect place(control->mapTo(&window.dialog, QPoint()), control->size());
            QVERIFY2(window.dialog.rect().contains(place), qPrintable(control->objectName()));
        }
    }
}

namespace {

QRgb MiddleOf(QWidget& widget) {
    const QImage image = widget.grab().toImage();
    return image.pixel(image.rect().center());
}

}  // namespace

void KeyboardAndLayoutTest::ReadOnlyBoxesHaveTheWindowsBackground() {
    TestWindow window;
    const QPalette before = QApplication::palette();
    for (const QColor& background : {before.color(QPalette::Window), QColor(0x20, 0x30, 0x40)}) {
        QPalette palette = before;
        palette.setColor(QPalette::Window, background);
        QApplication::setPalette(palette);
        for (const ControlId id :
             {ControlId::kInputDirectory, ControlId::kOutputDirectory, ControlId::kFileHeader}) {
            QTRY_COMPARE(MiddleOf(*Find<QWidget>(window.dialog, id)), background.rgb());
        }
        QVERIFY(MiddleOf(*Find<QWidget>(window.dialog, ControlId::kFileList)) != background.rgb());
    }
    QApplication::setPalette(before);
}

void KeyboardAndLayoutTest::WindowHasItsTitleAndLegalNotice() {
    TestWindow window;
    QCOMPARE(window.dialog.windowTitle(), "Veltrosyn Stalwick");
    QCOMPARE(Find<QLabel>(window.dialog, ControlId::kLegalNotice)->text(),
             "Provided as is, without warranty of any kind. For research use only; not for "
             "diagnostic or clinical use.");
}

STALWICK_WINDOW_TEST_MAIN(KeyboardAndLayoutTest)

#include "keyboard_and_layout_test.moc"
