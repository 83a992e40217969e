// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <functional>

#include <QDialog>

#include "engine/data_processor.h"

class QLabel;
class QPushButton;

namespace stalwick {

// Shown while a conversion runs: polls the processor's packet count and offers "Cancel". No user
// action closes it; its owner hides it.
class ProgressDlg : public QDialog {
    Q_OBJECT
  public:
    explicit ProgressDlg(QWidget* parent);

    // Called on "Cancel", after the timer was stopped. Without one, "Cancel" does nothing; with one
    // it is disabled after the first click, until the next processor.
    void SetCancelAction(std::function<void()> cancelAction);

    // The processor to watch, not owned; null stops watching.
    void SetProcessor(DataProcessor* processor);

    // 0 if no timer runs.
    int TimerId() const { return timerId_; }

    void reject() override {}

  protected:
    void timerEvent(QTimerEvent* event) override;

  private:
    void OnCancel();
    void StopTimer();
    void CenterOnParent();

    std::function<void()> cancelAction_;
    int timerId_ = 0;
    DataProcessor* processor_ = nullptr;
    QLabel* recordLabel_ = nullptr;
    QPushButton* cancel_ = nullptr;
};

}  // namespace stalwick
