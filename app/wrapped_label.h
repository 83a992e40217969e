// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QLabel>

namespace stalwick {

// A label of plain text that also wraps inside a word if nothing else fits: a path of any length is
// shown completely.
class WrappedLabel : public QLabel {
    Q_OBJECT
  public:
    // `width` in pixels; the height follows from the text.
    WrappedLabel(const QString& text, int width, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    int width_;
};

}  // namespace stalwick
