// SPDX-License-Identifier: BSD-3-Clause
#include "app/app_identity.h"

#include <QResource>

// The macro that links a static library's resources in must be outside any namespace.
static void LinkResources() {
    Q_INIT_RESOURCE(stalwick);
}

namespace stalwick {

QString ApplicationName() {
    return QStringLiteral("Veltrosyn Stalwick");
}

QString LegalNotice() {
    return QStringLiteral(
        "Provided as is, without warranty of any kind. For research use only; not for diagnostic "
        "or clinical use.");
}

QIcon ApplicationIcon() {
    LinkResources();
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        icon.addFile(QStringLiteral(":/icons/stalwick-%1.png").arg(size), QSize(size, size));
    }
    return icon;
}

}  // namespace stalwick
