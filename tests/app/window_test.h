// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include "app/control_ids.h"
#include "app/progress_dlg.h"
#include "app/stalwick_app.h"
#include "app/stalwick_dlg.h"
#include "tests/app/read_gate.h"
#include "tests/support/fixed_identity.h"
#include "tests/support/reference_converter.h"
#include "tests/support/temp_directory.h"

// Drives the real window with real clicks and keys over small recordings.

namespace stalwick::test {

inline constexpr int kPatienceMs = 20000;  // until a test gives up; nothing is measured

/** The contents of a message box; taking them dismisses it. */
struct SeenMessage {
    QString caption;
    QString text;
    QString details;
    bool detailsOpen = false;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QMessageBox::StandardButtons buttons;
    QWidget* owner = nullptr;
};

/** Waits for a message box, reads it and clicks its "OK"; nothing if none comes. */
std::optional<SeenMessage> TakeMessage();

/** The control with that number in the window; null if there is none. */
template <typename Control>
Control* Find(const QWidget& window, ControlId id) {
    return window.findChild<Control*>(ObjectName(id));
}

/** A real click into the middle of the control. */
void Click(QWidget& window, ControlId id);

/** The control's text without the marks of its mnemonic. */
QString PlainText(const QString& text);

/** Runs `act` as soon as a modal dialog of the type is on the screen; for dialogs that block. */
template <typename Dialog>
void WhenShown(std::function<void(Dialog&)> act) {
    auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
    if (dialog != nullptr && dialog->isVisible()) {
        act(*dialog);
    } else {
        QTimer::singleShot(10, qApp, [act] { WhenShown<Dialog>(act); });
    }
}

/** Drops URLs on the widget; true if it accepted them. */
bool Drop(QWidget& target, const QList<QUrl>& urls, Qt::DropActions offered = Qt::CopyAction);

/** The main dialog, shown, in a temporary directory with recordings; one time and one UUID for
 * all outputs. */
class TestWindow {
  public:
    TestWindow();
    ~TestWindow();

    // Makes the recording in/`name` with this many packets of 32 channels and returns its path.
    std::wstring AddRecording(const std::wstring& name, std::size_t packetCount);
    // The same with the test's own bytes.
    std::wstring AddFile(const std::wstring& name, const std::string& bytes);
    std::wstring InputDirectory() const { return directory.Path(L"in"); }
    std::wstring PathOf(const std::wstring& name) const;

    // Drives the file dialog: types the names and presses Enter.
    void SelectInputFiles(const QStringList& names);
    void SelectOutputDirectory(const std::wstring& path);

    // "Create New Files" with the mouse.
    void ClickStart() { Click(dialog, ControlId::kCreateNewFiles); }

    ProgressDlg* Progress() const { return dialog.findChild<ProgressDlg*>(); }
    QString RecordLabel() const;
    QString HeaderText() const;
    void ClickListItem(int item);

    // The outputs of one recording from the reference, canceled after this many blocks or not at
    // all.
    ReferenceConvertResult Reference(const std::wstring& name, const std::wstring& outputDirectory,
                                     const ReferenceConvertOptions& options = {},
                                     std::optional<std::size_t> blocksUntilCancel = {}) const;
    // The outputs in the recording's directory.
    std::map<std::string, std::string> Outputs(const std::wstring& name,
                                               const std::wstring& outputDirectory) const;

    TempDirectory directory;
    FixedIdentity identity;
    ReadGate gate;
    StalwickDlg dialog;

  private:
    std::map<std::wstring, std::string> recordings_;
};

/** Packets of the recording that end inside its first block of 50,000 bytes. */
std::size_t PacketsInFirstBlock(std::size_t packetCount);

}  // namespace stalwick::test

/** main() of a suite: file dialogs are Qt's own, so that a test can drive them everywhere. */
#define STALWICK_WINDOW_TEST_MAIN(Suite)                             \
    int main(int argumentCount, char** arguments) {                  \
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); \
        stalwick::StalwickApp app(argumentCount, arguments);         \
        Suite suite;                                                 \
        return QTest::qExec(&suite, argumentCount, arguments);       \
    }
