// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include <QString>
#include <QUrl>

namespace stalwick {

// Text between the engine and the window. Both directions keep the lone code units U+DC80 to
// U+DCFF, which platform/text_encoding.h uses for the bytes of a file name that is not UTF-8.
QString ToQString(const std::wstring& text);
std::wstring ToWide(const QString& text);

// A path from a file dialog, with this system's separators.
std::wstring ToWidePath(const QString& path);

// The path of a local file's URL; empty for any other URL.
std::wstring LocalPath(const QUrl& url);

// A path for a tool tip, where text with "<" or "&" could be interpreted as rich text.
QString PathToolTip(const QString& path);

// A recording's header with LF as its only line end, for a text view.
QString HeaderViewText(const std::wstring& headerText);

}  // namespace stalwick
