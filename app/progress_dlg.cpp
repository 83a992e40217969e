// SPDX-License-Identifier: BSD-3-Clause
#include "app/progress_dlg.h"

#include <limits>
#include <utility>

#include <QBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimerEvent>

#include "app/control_ids.h"

namespace stalwick {

namespace {

constexpr int kTimerPeriodMs = 25;

QString RecordText(std::uint64_t recordsProcessed) {
    return QStringLiteral("Processing record %1").arg(recordsProcessed);
}

QProgressBar* MakeMarquee() {
    auto* bar =
        Identify(new QProgressBar, ControlId::kProgressBar, QStringLiteral("Conversion progress"));
    bar->setRange(0, 0);  // the end is unknown: the bar only moves
    bar->setTextVisible(false);
    return bar;
}

// Wide enough for any count, so that the dialog keeps its size while the number grows.
QLabel* MakeRecordLabel() {
    auto* label = Identify(new QLabel(QStringLiteral("x")), ControlId::kRecordLabel);
    const QString longest = RecordText(std::numeric_limits<std::uint64_t>::max());
    label->setMinimumWidth(label->fontMetrics().horizontalAdvance(longest));
    return label;
}

}  // namespace

ProgressDlg::ProgressDlg(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint),
      recordLabel_(MakeRecordLabel()) {
    setWindowTitle(QStringLiteral("Data Conversion"));
    auto* title = Identify(new QLabel(QStringLiteral("Data conversion in progress...")),
                           ControlId::kProgressTitle);
    cancel_ = Identify(new QPushButton(QStringLiteral("&Cancel")), ControlId::kCancel,
                       QStringLiteral("Cancel"));
    cancel_->setAutoDefault(false);  // Enter cancels nothing
    connect(cancel_, &QPushButton::clicked, this, &ProgressDlg::OnCancel);

    auto* lower = new QHBoxLayout;
    lower->addWidget(recordLabel_, 1);
    lower->addWidget(cancel_);

    auto* all = new QVBoxLayout(this);
    all->addWidget(title);
    all->addWidget(MakeMarquee());
    all->addLayout(lower);
    all->setSizeConstraint(QLayout::SetFixedSize);
    cancel_->setFocus();
}

void ProgressDlg::SetCancelAction(std::function<void()> cancelAction) {
    cancelAction_ = std::move(cancelAction);
}

void ProgressDlg::SetProcessor(DataProcessor* processor) {
    processor_ = processor;
    if (processor_ == nullptr) {
        StopTimer();
        return;
    }
    recordLabel_->clear();
    cancel_->setEnabled(true);
    cancel_->setFocus();
    if (timerId_ == 0) timerId_ = startTimer(kTimerPeriodMs);
    CenterOnParent();
}

void ProgressDlg::timerEvent(QTimerEvent* event) {
    if (event->timerId() != timerId_ || processor_ == nullptr) {
        QDialog::timerEvent(event);
        return;
    }
    recordLabel_->setText(RecordText(processor_->recordsProcessed.load(std::memory_order_relaxed)));
}

void ProgressDlg::OnCancel() {
    if (!cancelAction_) return;
    StopTimer();
    cancel_->setEnabled(false);
    cancelAction_();
}

void ProgressDlg::StopTimer() {
    if (timerId_ == 0) return;
    killTimer(timerId_);
    timerId_ = 0;
}

void ProgressDlg::CenterOnParent() {
    adjustSize();
    move(parentWidget()->frameGeometry().center() - frameGeometry().center() + pos());
}

}  // namespace stalwick
