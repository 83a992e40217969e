// SPDX-License-Identifier: BSD-3-Clause
#include "app/qt_text.h"

#include <QByteArray>
#include <QDir>
#include <QTextDocument>

#include "platform/text_encoding.h"

namespace stalwick {

QString ToQString(const std::wstring& text) {
    return QString::fromStdWString(text);
}

// QString::toStdWString() replaces a lone surrogate by U+FFFD.
std::wstring ToWide(const QString& text) {
    std::wstring wide;
    wide.reserve(static_cast<std::size_t>(text.size()));
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isPair = sizeof(wchar_t) == 4 && text[i].isHighSurrogate() &&
                            i + 1 < text.size() && text[i + 1].isLowSurrogate();
        if (isPair) {
            wide += static_cast<wchar_t>(QChar::surrogateToUcs4(text[i], text[i + 1]));
            ++i;
        } else {
            wide += static_cast<wchar_t>(text[i].unicode());
        }
    }
    return wide;
}

std::wstring ToWidePath(const QString& path) {
    return ToWide(QDir::toNativeSeparators(path));
}

// A URL can carry the bytes of a name that is not UTF-8; QUrl::toLocalFile() would lose them.
std::wstring LocalPath(const QUrl& url) {
    if (!url.isLocalFile()) return {};
    const QByteArray bytes =
        QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
    if (!IsValidUtf8(bytes.toStdString())) return FromUtf8(bytes.toStdString());
    return ToWidePath(url.toLocalFile());
}

QString PathToolTip(const QString& path) {
    return Qt::mightBeRichText(path) ? Qt::convertFromPlainText(path) : path;
}

QString HeaderViewText(const std::wstring& headerText) {
    QString text = ToQString(headerText);
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return text;
}

}  // namespace stalwick
