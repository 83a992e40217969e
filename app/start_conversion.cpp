// SPDX-License-Identifier: BSD-3-Clause

// The part of the main dialog that starts and ends a conversion.

#include <new>
#include <system_error>
#include <thread>

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>

#include "app/app_identity.h"
#include "app/message_box.h"
#include "app/progress_dlg.h"
#include "app/qt_text.h"
#include "app/stalwick_dlg.h"
#include "engine/out_of_memory.h"
#include "engine/output_directory.h"
#include "platform/system_error.h"
#include "platform/text_encoding.h"

namespace stalwick {

void StalwickDlg::StartConversion() {
    const std::wstring outputDirectory = ToWide(controls_.outputDirectory->text());
    ConversionJob job = MakeJob(outputDirectory);
    if (const SystemErrorCode code = EnsureOutputDirectory(outputDirectory); code != 0) {
        ShowMessage(this, QMessageBox::Critical,
                    {.caption = QStringLiteral("Data Directory Error"),
                     .text = ToQString(OneLine(OutputDirectoryErrorText(outputDirectory))),
                     .details = ToQString(L"cannot create directory " + OneLine(outputDirectory) +
                                          L": " + SystemErrorText(code))});
        return;
    }
    converting_ = true;
    focusBeforeConversion_ = focusWidget();
    setEnabled(false);
    ShowProgress();
    processor_.recordsProcessed = 0;
    processor_.cancelRequested = 0;
    try {
        std::thread([this, job = std::move(job)]() mutable { Convert(std::move(job)); }).detach();
    } catch (const std::system_error& error) {  // no thread is available
        EndConversion();
        ShowMessage(this, QMessageBox::Critical,
                    {.caption = ApplicationName(),
                     .text = QStringLiteral("The conversion could not be started: ") +
                             QString::fromStdString(error.code().message()) +
                             QStringLiteral("; close other programs and start it again")});
    }
}

ConversionJob StalwickDlg::MakeJob(const std::wstring& outputDirectory) {
    const auto isChecked = [](const QCheckBox* box) {
        return static_cast<std::uint8_t>(box->isChecked() ? 1 : 0);
    };
    ConversionJob job;
    job.inputFiles = inputPaths_;
    job.processor = &processor_;
    job.outputDirectory = outputDirectory;
    job.channelOptions = {isChecked(controls_.cscOutput), isChecked(controls_.baseImu),
                          isChecked(controls_.afeImu), isChecked(controls_.ultrasonic)};
    job.writeEvents = true;
    job.writeRawData = controls_.rawDataFileOutput->isChecked();
    // Runs on the worker's thread, which does not wait for the message box.
    job.onFinished = [this](const std::wstring& status) {
        ReportFinish(MakeOutcome(status, processor_.Details()));
    };
    return job;
}

// The worker's thread. A lack of memory ends the conversion, not the program: when it is reported,
// the conversion's memory is free again.
void StalwickDlg::Convert(ConversionJob job) {
    try {
        RunConversionJob(job);
    } catch (const std::bad_alloc&) {
        std::vector<ConversionDetail> details = processor_.Details();
        details.push_back(OutOfMemoryDetail(processor_.LastAccount().recording));
        details.back().text += L"; convert it again with fewer outputs";
        ReportFinish(MakeOutcome(FromUtf8(kStatusOutOfMemory), details));
    }
}

void StalwickDlg::ReportFinish(const Outcome& outcome) {
    QMetaObject::invokeMethod(
        this, [this, outcome] { OnConversionFinished(outcome); }, Qt::QueuedConnection);
}

void StalwickDlg::ShowProgress() {
    progressDlg_->setEnabled(true);  // a disabled window disables the windows it owns
    progressDlg_->show();
    progressDlg_->SetCancelAction([this] { CancelConversion(); });
    progressDlg_->SetProcessor(&processor_);
}

void StalwickDlg::RaiseProgress() {
    // A message box in front of both would get the keyboard back, and so on without end.
    if (QApplication::activeModalWidget() != nullptr) return;
    progressDlg_->raise();
    progressDlg_->activateWindow();
}

void StalwickDlg::CancelConversion() {
    processor_.cancelRequested = 1;
    progressDlg_->SetProcessor(nullptr);
}

StalwickDlg::Outcome StalwickDlg::MakeOutcome(const std::wstring& status,
                                              const std::vector<ConversionDetail>& details) {
    Outcome outcome;
    outcome.status = ToQString(OneLine(status));
    QStringList lines;
    for (const ConversionDetail& detail : details) {
        lines += ToQString(OneLine(detail.text));
        outcome.dataMissing |= detail.kind != ConversionDetail::Kind::kNote;
    }
    outcome.details = lines.join(QLatin1Char('\n'));
    return outcome;
}

void StalwickDlg::EndConversion() {
    converting_ = false;
    setEnabled(true);
    if (focusBeforeConversion_) focusBeforeConversion_->setFocus();
    if (progressDlg_->isVisible()) {
        progressDlg_->SetProcessor(nullptr);
        progressDlg_->hide();
    }
}

void StalwickDlg::OnConversionFinished(const Outcome& outcome) {
    EndConversion();
    // Missing data changes no status text, so the details are shown without a press of a button.
    ShowMessage(this, QMessageBox::NoIcon,
                {.caption = ApplicationName(),
                 .text = outcome.status,
                 .details = outcome.details,
                 .showDetails = outcome.dataMissing});
}

}  // namespace stalwick
