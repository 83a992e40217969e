#pragma once

#include <QIcon>
#include <QString>

namespace stalwick {

// Who the program is: in its windows, its icon and its About box.

inline constexpr int kVersionMajor = 1;
inline constexpr int kVersionMinor = 2;
inline constexpr int kVersionPatch = 0;
inline constexpr int kBuildNumber = 1941;

QString ApplicationName();
QString LegalNotice();

// PNGs of 16 to 256 pixels.
QIcon ApplicationIcon();

}  // namespace stalwick
