// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <QDialog>
#include <QPointer>

#include "app/main_controls.h"
#include "engine/conversion_job.h"
#include "engine/data_processor.h"

class QPushButton;
class QSessionManager;

namespace stalwick {

class ProgressDlg;

// The program's window: the input files and their headers, the output directory, the kinds of
// output, and the start of a conversion. Used by the window's thread.
//
// While a conversion runs, the dialog is disabled and refuses to be closed; any attempt to use it
// shows the progress dialog. It must outlive the conversion, which uses its processor.
class StalwickDlg : public QDialog {
    Q_OBJECT
  public:
    explicit StalwickDlg(QWidget* parent = nullptr);
    ~StalwickDlg() override;

    bool IsConverting() const { return converting_; }

    // Replaces the files in the list, and puts the directory of the last one into both directory
    // boxes. At least one; full paths.
    void SelectFiles(const std::vector<std::wstring>& paths);

    void OnSelectInputFiles();
    void OnSelectOutputDirectory();
    void OnClearList();

    // Shows the header of a file of the list. Does nothing if the index is invalid or the file
    // cannot be opened.
    void OnFileListClick(int item);

    // "Create New Files" and "Clear List" need a file and an output directory.
    void UpdateButtons();

    // Converts the files of the list. If the output directory cannot be created or no thread is
    // available, reports it and converts nothing.
    void StartConversion();

    // True if the system menu's command is one of this dialog's.
    bool OnSysCommand(std::uint32_t command);

    void ShowAbout();

    void reject() override;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool nativeEvent(const QByteArray& eventType, void* message, qintptr* result) override;

  private:
    // How a conversion ended: the status text, and everything it does not cover.
    struct Outcome {
        QString status;
        QString details;
        bool dataMissing = false;  // in an output, or in the recording itself
    };

    void OnInitDialog();
    void ConnectControls();
    void ConnectButton(QPushButton* button, void (StalwickDlg::*act)());
    bool IsBlocked() const;
    ConversionJob MakeJob(const std::wstring& outputDirectory);
    void ShowProgress();
    void RaiseProgress();
    void CancelConversion();
    void Convert(ConversionJob job);
    static Outcome MakeOutcome(const std::wstring& status,
                               const std::vector<ConversionDetail>& details);
    // From any thread: ends the conversion on the window's thread.
    void ReportFinish(const Outcome& outcome);
    // Restores the window to its state before the conversion.
    void EndConversion();
    void OnConversionFinished(const Outcome& outcome);
    void OnCommitData(QSessionManager& manager);

    std::vector<std::wstring> inputPaths_;  // in the order of the list
    DataProcessor processor_;
    MainControls controls_;
    ProgressDlg* progressDlg_ = nullptr;
    bool converting_ = false;
    QPointer<QWidget> focusBeforeConversion_;
};

}  // namespace stalwick
