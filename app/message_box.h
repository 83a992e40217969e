// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMessageBox>
#include <QString>

namespace stalwick {

struct MessageText {
    QString caption;
    QString text;              // shown literally, never as rich text
    QString details = {};      // shown by "Show Details..."; empty: no such button
    bool showDetails = false;  // open from the start
};

// Shows a box with an OK button over `owner` and returns; the box blocks its owner and deletes
// itself.
QMessageBox* ShowMessage(QWidget* owner, QMessageBox::Icon icon, const MessageText& message);

}  // namespace stalwick
