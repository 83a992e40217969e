// SPDX-License-Identifier: BSD-3-Clause
#include "app/stalwick_dlg.h"

#include <QApplication>
#include <QCheckBox>
#include <QDropEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSessionManager>
#include <QTreeWidget>
#include <QWindow>

#include "app/about_dlg.h"
#include "app/app_identity.h"
#include "app/file_dialogs.h"
#include "app/offered_files.h"
#include "app/progress_dlg.h"
#include "app/qt_text.h"
#include "ord/ord_file_reader.h"
#include "platform/file_system.h"
#include "platform/paths.h"
#include "platform/system_menu.h"

namespace stalwick {

namespace {

constexpr std::uint32_t kAboutCommand = 16;
// The system reserves the lowest four bits of a command.
constexpr std::uint32_t kCommandMask = 0xFFF0;

// Whatever action the keys propose: after a move, a file manager deletes the source.
void AcceptAsCopy(QDropEvent& event) {
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

bool OffersACopy(const QDropEvent& event) {
    return (event.possibleActions() & Qt::CopyAction) != 0;
}

}  // namespace

StalwickDlg::StalwickDlg(QWidget* parent) : QDialog(parent, Qt::Window) {
    OnInitDialog();
}

StalwickDlg::~StalwickDlg() {
    Q_ASSERT(!converting_);
}

void StalwickDlg::OnInitDialog() {
    controls_ = MakeMainControls(*this);
    AppendSystemMenuItem(winId(), kAboutCommand, ToWide(controls_.about->text()));
    setWindowIcon(ApplicationIcon());
    setWindowTitle(ApplicationName());
    controls_.legalNotice->setText(LegalNotice());
    controls_.cscOutput->setChecked(true);
    setAcceptDrops(true);
    progressDlg_ = new ProgressDlg(this);
    ConnectControls();
    windowHandle()->installEventFilter(this);
}

void StalwickDlg::ConnectControls() {
    connect(controls_.about, &QAction::triggered, this, &StalwickDlg::ShowAbout);
    ConnectButton(controls_.selectInputFiles, &StalwickDlg::OnSelectInputFiles);
    ConnectButton(controls_.selectOutputDirectory, &StalwickDlg::OnSelectOutputDirectory);
    ConnectButton(controls_.clearList, &StalwickDlg::OnClearList);
    ConnectButton(controls_.createNewFiles, &StalwickDlg::StartConversion);
    connect(controls_.outputDirectory, &QLineEdit::textChanged, this, &StalwickDlg::UpdateButtons);

    QTreeWidget* list = controls_.fileList;
    const auto showHeader = [this, list](QTreeWidgetItem* item) {
        OnFileListClick(list->indexOfTopLevelItem(item));
    };
    connect(list, &QTreeWidget::itemClicked, this, showHeader);
    // Enter activates an item: the keyboard's equivalent of a click.
    connect(list, &QTreeWidget::itemActivated, this, showHeader);
    connect(list, &QTreeWidget::itemChanged, this, &StalwickDlg::UpdateButtons);
    connect(list, &QTreeWidget::itemSelectionChanged, this, &StalwickDlg::UpdateButtons);

    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, &StalwickDlg::OnCommitData,
            Qt::DirectConnection);
}

// A button pressed by its mnemonic acts a moment later; by then another one may have opened a
// dialog or started a conversion. Below a modal dialog, a conversion could not be canceled.
void StalwickDlg::ConnectButton(QPushButton* button, void (StalwickDlg::*act)()) {
    connect(button, &QPushButton::clicked, this, [this, act] {
        if (!IsBlocked()) (this->*act)();
    });
}

bool StalwickDlg::IsBlocked() const {
    const QWidget* const modal = QApplication::activeModalWidget();
    return converting_ || (modal != nullptr && modal != this);
}

void StalwickDlg::OnSelectInputFiles() {
    const auto paths = AskForInputFiles(this, controls_.inputDirectory->text());
    if (!paths.empty()) SelectFiles(paths);
}

void StalwickDlg::SelectFiles(const std::vector<std::wstring>& paths) {
    inputPaths_ = paths;
    controls_.fileList->clear();
    for (const std::wstring& path : paths) {
        const auto separator = LastSeparator(path);
        auto* item = new QTreeWidgetItem({ToQString(path.substr(separator + 1))});
        item->setToolTip(0, PathToolTip(ToQString(path)));
        controls_.fileList->addTopLevelItem(item);
    }
    const QString directory = ToQString(ParentDirectory(paths.back()));
    controls_.outputDirectory->setText(directory);
    controls_.inputDirectory->setText(directory);
    UpdateButtons();
}

void StalwickDlg::OnSelectOutputDirectory() {
    const auto directory = AskForOutputDirectory(this, controls_.outputDirectory->text());
    if (!directory.empty()) controls_.outputDirectory->setText(ToQString(directory));
}

void StalwickDlg::OnClearList() {
    inputPaths_.clear();
    controls_.fileList->clear();
    UpdateButtons();
}

void StalwickDlg::UpdateButtons() {
    const bool ready = !controls_.outputDirectory->text().isEmpty() && !inputPaths_.empty();
    controls_.createNewFiles->setEnabled(ready);
    controls_.clearList->setEnabled(ready);
}

void StalwickDlg::OnFileListClick(int item) {
    if (item < 0 || static_cast<std::size_t>(item) >= inputPaths_.size()) return;
    const std::wstring& path = inputPaths_[static_cast<std::size_t>(item)];
    if (!IsOrdinaryFile(path)) return;  // a pipe or a device could block the window
    ORDFileReader reader;
    if (reader.Open(path) != 0) return;
    controls_.fileHeader->setPlainText(HeaderViewText(reader.GetHeaderText()));
    reader.Close();
}

bool StalwickDlg::OnSysCommand(std::uint32_t command) {
    if ((command & kCommandMask) != kAboutCommand) return false;
    ShowAbout();
    return true;
}

// The system menu works even on a disabled dialog; a modal box would make "Cancel" unreachable.
void StalwickDlg::ShowAbout() {
    if (!converting_) CAboutDlg(this).exec();
}

// Every way to close the window ends here; without QDialog::reject it stays open.
void StalwickDlg::reject() {
    if (converting_) {
        RaiseProgress();
    } else {
        QDialog::reject();
    }
}

// Sees the window's events before any control does, because a disabled button swallows its clicks.
// FocusIn: its frame and the taskbar can activate even a disabled dialog.
bool StalwickDlg::eventFilter(QObject* watched, QEvent* event) {
    const bool reached =
        event->type() == QEvent::MouseButtonPress || event->type() == QEvent::FocusIn;
    if (converting_ && reached) RaiseProgress();
    return QDialog::eventFilter(watched, event);
}

void StalwickDlg::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange && controls_.fileHeader != nullptr) {
        LookReadOnly(controls_, palette());
    }
    QDialog::changeEvent(event);
}

// Escape would close the dialog.
void StalwickDlg::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Cancel)) {
        event->ignore();
        return;
    }
    QDialog::keyPressEvent(event);
}

void StalwickDlg::dragEnterEvent(QDragEnterEvent* event) {
    if (converting_ || !OffersACopy(*event)) return;
    if (!DroppedRecordings(event->mimeData()).empty()) AcceptAsCopy(*event);
}

// Each movement comes with its own proposal.
void StalwickDlg::dragMoveEvent(QDragMoveEvent* event) {
    if (!converting_ && OffersACopy(*event)) AcceptAsCopy(*event);
}

void StalwickDlg::dropEvent(QDropEvent* event) {
    const auto paths = DroppedRecordings(event->mimeData());
    if (converting_ || !OffersACopy(*event) || paths.empty()) return;
    SelectFiles(paths);
    AcceptAsCopy(*event);
}

bool StalwickDlg::nativeEvent(const QByteArray& eventType, void* message, qintptr* result) {
    const auto command = SystemMenuCommand(eventType.constData(), message);
    if (command && OnSysCommand(*command)) {
        *result = 0;
        return true;
    }
    return QDialog::nativeEvent(eventType, message, result);
}

// The session is about to end; it must not take a running conversion with it.
void StalwickDlg::OnCommitData(QSessionManager& manager) {
    if (converting_) manager.cancel();
}

}  // namespace stalwick
