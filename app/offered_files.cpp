// SPDX-License-Identifier: BSD-3-Clause
#include "app/offered_files.h"

#include <cstdio>

#include <QMimeData>

#include "app/qt_text.h"
#include "platform/file_system.h"
#include "platform/paths.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

bool IsRecording(const std::wstring& path) {
    const QString extension = ToQString(SplitPath(path).extension);
    return extension.compare(QLatin1String(".ord"), Qt::CaseInsensitive) == 0 &&
           QueryPath(path) == PathKind::kFile;
}

}  // namespace

std::vector<std::wstring> DroppedRecordings(const QMimeData* data) {
    std::vector<std::wstring> paths;
    for (const QUrl& url : data->urls()) {
        std::wstring path = LocalPath(url);
        if (IsRecording(path)) paths.push_back(std::move(path));
    }
    return paths;
}

std::vector<std::wstring> RecordingsInArguments(const std::vector<std::string>& arguments) {
    std::vector<std::wstring> paths;
    for (const std::string& argument : arguments) {
        // The list shows directories, so paths are made absolute at once.
        std::wstring path = AbsolutePath(FromUtf8(argument));
        if (IsRecording(path)) {
            paths.push_back(std::move(path));
        } else {
            const std::string name = ToUtf8(OneLine(FromUtf8(argument)));
            std::fprintf(stderr, "stalwick: %s: ignored; no recording (.ord) of that name exists\n",
                         name.c_str());
        }
    }
    return paths;
}

}  // namespace stalwick
