// SPDX-License-Identifier: BSD-3-Clause
#include "app/message_box.h"

#include <QAbstractButton>
#include <QGridLayout>
#include <QLabel>

#include "app/wrapped_label.h"

namespace stalwick {

namespace {

constexpr int kTextWidth = 380;  // with the margins, a box of about 420 pixels

void OpenDetails(QMessageBox& box) {
    for (QAbstractButton* button : box.buttons()) {
        if (box.buttonRole(button) == QMessageBox::ActionRole) button->click();
    }
}

// The box's own label breaks lines only between words and would cut off a long path. It keeps the
// text, hidden; another label shows it instead.
void WrapText(QMessageBox& box) {
    auto* grid = qobject_cast<QGridLayout*>(box.layout());
    auto* own = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    if (grid == nullptr || own == nullptr) return;
    int row = 0;
    int column = 0;
    int rows = 1;
    int columns = 1;
    grid->getItemPosition(grid->indexOf(own), &row, &column, &rows, &columns);
    own->hide();
    grid->addWidget(new WrappedLabel(own->text(), kTextWidth, &box), row, column, rows, columns,
                    Qt::AlignVCenter);
}

}  // namespace

QMessageBox* ShowMessage(QWidget* owner, QMessageBox::Icon icon, const MessageText& message) {
    auto* box = new QMessageBox(owner);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(icon);
    box->setWindowTitle(message.caption);
    box->setTextFormat(Qt::PlainText);
    box->setText(message.text);
    box->setDetailedText(message.details);
    box->setStandardButtons(QMessageBox::Ok);
    WrapText(*box);
    if (message.showDetails) OpenDetails(*box);
    box->open();
    return box;
}

}  // namespace stalwick
