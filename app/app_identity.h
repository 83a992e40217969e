#pragma once

#include <QIcon>
#include <QString>

namespace stalwick {

// Who the program is: in its windows, its icon and its About box.

QString ApplicationName();
QString LegalNotice();

// PNGs of 16 to 256 pixels.
QIcon ApplicationIcon();

}  // namespace stalwick
