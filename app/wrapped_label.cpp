// SPDX-License-Identifier: BSD-3-Clause
#include "app/wrapped_label.h"

#include <QPainter>
#include <QTextLayout>
#include <QtMath>

namespace stalwick {

namespace {

QTextOption Wrapping() {
    QTextOption option(Qt::AlignLeft | Qt::AlignTop);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    return option;
}

}  // namespace

WrappedLabel::WrappedLabel(const QString& text, int width, QWidget* parent)
    : QLabel(text, parent), width_(width) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
}

QSize WrappedLabel::sizeHint() const {
    return {width_, heightForWidth(width_)};
}

int WrappedLabel::heightForWidth(int width) const {
    QTextLayout layout(text(), font());
    layout.setTextOption(Wrapping());
    layout.beginLayout();
    qreal height = 0;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        height += line.height();
    }
    layout.endLayout();
    return qCeil(height);
}

void WrappedLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(QRectF(rect()), text(), Wrapping());
}

}  // namespace stalwick
