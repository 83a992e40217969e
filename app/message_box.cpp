#include "app/message_box.h"

#include <QAbstractButton>

namespace stalwick {

namespace {

void OpenDetails(QMessageBox& box) {
    for (QAbstractButton* button : box.buttons()) {
        if (box.buttonRole(button) == QMessageBox::ActionRole) button->click();
    }
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
    if (message.showDetails) OpenDetails(*box);
    box->open();
    return box;
}

}  // namespace stalwick
