// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QIcon>
#include <QString>

namespace stalwick {

// The program's name, icon and other identity, for its windows and its About box.

QString ApplicationName();
QString LegalNotice();

// PNGs of 16 to 256 pixels.
QIcon ApplicationIcon();

}  // namespace stalwick
