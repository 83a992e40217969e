// SPDX-License-Identifier: BSD-3-Clause
#include <QFileDialog>
#include <QPushButton>

#include "app/about_dlg.h"
#include "tests/app/window_test.h"

using namespace stalwick;
using namespace stalwick::test;

// User actions while the window is busy with something else. A button pressed by its mnemonic acts
// about 100 ms later, so two can be pending at the same time.
class OneAtATimeTest : public QObject {
    Q_OBJECT
  private slots:
    void SecondMnemonicDoesNothingUnderTheDialogOfTheFirst_data();
    void SecondMnemonicDoesNothingUnderTheDialogOfTheFirst();
    void MnemonicAfterTheStartDoesNothing_data();
    void MnemonicAfterTheStartDoesNothing();
    void AboutAfterTheStartDoesNothing();
    void ButtonsWorkAgainAfterTheDialog();
    void ClickOnTheMainWindowBringsTheProgressDialogAndItsKeyboard_data();
    void ClickOnTheMainWindowBringsTheProgressDialogAndItsKeyboard();
    void ActivatingTheMainWindowBringsTheProgressDialog();
};

namespace {

// A main dialog that could start a conversion. A started conversion waits for its first read.
struct ReadyToStart {
    ReadyToStart() {
        window.AddRecording(L"a.ord", 20);
        window.SelectInputFiles({"a.ord"});
        window.gate.Allow(0);
        Activate(window.dialog);
    }

    static void Activate(QWidget& widget) {
        widget.show();
        widget.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&widget));
    }

    // Presses the button by its mnemonic; it has not acted yet.
    QPushButton* Press(ControlId id) {
        auto* button = Find<QPushButton>(window.dialog, id);
        const auto mark = button->text().indexOf(QLatin1Char('&'));
        const Qt::Key key = Qt::Key(button->text()[mark + 1].toUpper().unicode());
        QTest::keyClick(&window.dialog, key, Qt::AltModifier);
        return button;
    }

    TestWindow window;
};

QList<QFileDialog*> VisibleFileDialogs() {
    QList<QFileDialog*> dialogs;
    for (QWidget* top : QApplication::topLevelWidgets()) {
        auto* dialog = qobject_cast<QFileDialog*>(top);
        if (dialog != nullptr && dialog->isVisible()) dialogs += dialog;
    }
    return dialogs;
}

// What is on the screen once `button` has acted below a file dialog; closes the dialogs. Uses a
// timer, because each dialog runs its own event loop.
struct BelowAFileDialog {
    BelowAFileDialog(const StalwickDlg& main, const QPushButton& button) {
        QObject::connect(&watch, &QTimer::timeout, &watch, [this, &main, &button] {
            const auto dialogs = VisibleFileDialogs();
            if (dialogs.isEmpty() || button.isDown()) return;
            watch.stop();
            dialogCount = dialogs.size();
            converting = main.IsConverting();
            listIsFilled = Find<QPushButton>(main, ControlId::kClearList)->isEnabled();
            for (QFileDialog* dialog : dialogs) dialog->reject();
        });
        watch.start(10);
    }

    QTimer watch;
    qsizetype dialogCount = 0;
    bool converting = false;
    bool listIsFilled = false;
};

}  // namespace

void OneAtATimeTest::SecondMnemonicDoesNothingUnderTheDialogOfTheFirst_data() {
    QTest::addColumn<ControlId>("first");
    QTest::addColumn<ControlId>("second");
    for (const auto& [name, first] : {std::pair("input", ControlId::kSelectInputFiles),
                                      std::pair("output", ControlId::kSelectOutputDirectory)}) {
        for (const ControlId second :
             {ControlId::kSelectInputFiles, ControlId::kSelectOutputDirectory,
              ControlId::kClearList, ControlId::kCreateNewFiles}) {
            if (first == second) continue;
            QTest::addRow("%s, then %d", name, static_cast<int>(second)) << first << second;
        }
    }
}

void OneAtATimeTest::SecondMnemonicDoesNothingUnderTheDialogOfTheFirst() {
    QFETCH(ControlId, first);
    QFETCH(ControlId, second);
    ReadyToStart ready;
    const QPushButton* const firstButton = ready.Press(first);
    const QPushButton* const secondButton = ready.Press(second);
    QVERIFY(firstButton->isDown());
    QVERIFY(secondButton->isDown());
    BelowAFileDialog seen(ready.window.dialog, *secondButton);
    QTRY_COMPARE_WITH_TIMEOUT(seen.dialogCount, 1, kPatienceMs);
    QVERIFY(!seen.converting);
    QVERIFY(seen.listIsFilled);
}

void OneAtATimeTest::MnemonicAfterTheStartDoesNothing_data() {
    QTest::addColumn<ControlId>("second");
    QTest::newRow("input") << ControlId::kSelectInputFiles;
    QTest::newRow("output") << ControlId::kSelectOutputDirectory;
    QTest::newRow("clear") << ControlId::kClearList;
}

void OneAtATimeTest::MnemonicAfterTheStartDoesNothing() {
    QFETCH(ControlId, second);
    ReadyToStart ready;
    BelowAFileDialog seen(ready.window.dialog, *Find<QPushButton>(ready.window.dialog, second));
    ready.Press(ControlId::kCreateNewFiles);
    const QPushButton* const button = ready.Press(second);
    QTRY_VERIFY(ready.window.dialog.IsConverting() && !button->isDown());
    QCOMPARE(seen.dialogCount, 0);
    QVERIFY(Find<QPushButton>(*ready.window.Progress(), ControlId::kCancel)->isEnabled());
    ready.window.gate.AllowAll();
    QVERIFY(TakeMessage());
    QVERIFY(Find<QPushButton>(ready.window.dialog, ControlId::kClearList)->isEnabled());
}

// The menu was open when the conversion started.
void OneAtATimeTest::AboutAfterTheStartDoesNothing() {
    ReadyToStart ready;
    ready.window.ClickStart();
    bool shown = false;
    WhenShown<CAboutDlg>([&shown](CAboutDlg& about) {
        shown = true;
        about.accept();
    });
    for (QAction* action : ready.window.dialog.findChildren<QAction*>()) {
        if (PlainText(action->text()) == "About Stalwick...") action->trigger();
    }
    QVERIFY(!shown);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    ready.window.gate.AllowAll();
    QVERIFY(TakeMessage());
    ready.window.dialog.ShowAbout();
    QVERIFY(shown);
}

void OneAtATimeTest::ButtonsWorkAgainAfterTheDialog() {
    ReadyToStart ready;
    WhenShown<QFileDialog>([](QFileDialog& dialog) { dialog.reject(); });
    Click(ready.window.dialog, ControlId::kSelectInputFiles);
    ReadyToStart::Activate(ready.window.dialog);
    ready.Press(ControlId::kCreateNewFiles);
    QTRY_VERIFY(ready.window.dialog.IsConverting());
    ready.window.gate.AllowAll();
    QVERIFY(TakeMessage());
}

void OneAtATimeTest::ClickOnTheMainWindowBringsTheProgressDialogAndItsKeyboard_data() {
    QTest::addColumn<ControlId>("place");
    QTest::newRow("a button") << ControlId::kSelectInputFiles;
    QTest::newRow("the list") << ControlId::kFileList;
    QTest::newRow("the header") << ControlId::kFileHeader;
    QTest::newRow("the legal notice") << ControlId::kLegalNotice;
}

void OneAtATimeTest::ClickOnTheMainWindowBringsTheProgressDialogAndItsKeyboard() {
    QFETCH(ControlId, place);
    ReadyToStart ready;
    StalwickDlg& dialog = ready.window.dialog;
    ready.window.ClickStart();
    QWidget other;
    ReadyToStart::Activate(other);
    const auto* control = Find<QWidget>(dialog, place);
    QTest::mouseClick(dialog.windowHandle(), Qt::LeftButton, {},
                      control->mapTo(&dialog, control->rect().center()));
    QTRY_COMPARE(QApplication::activeWindow(), ready.window.Progress());
    // To the widget: a window's keys wait in a queue on Windows.
    QVERIFY(QApplication::focusWidget() != nullptr);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    ready.window.gate.AllowAll();
    QCOMPARE(TakeMessage().value_or(SeenMessage{}).text, "Data processing canceled.");
}

// From the taskbar, or by a click on the frame.
void OneAtATimeTest::ActivatingTheMainWindowBringsTheProgressDialog() {
    ReadyToStart ready;
    ready.window.ClickStart();
    QWidget other;
    ReadyToStart::Activate(other);
    ready.window.dialog.activateWindow();
    QTRY_COMPARE(QApplication::activeWindow(), ready.window.Progress());
}

STALWICK_WINDOW_TEST_MAIN(OneAtATimeTest)

#include "one_at_a_time_test.moc"
