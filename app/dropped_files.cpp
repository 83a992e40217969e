#include "app/dropped_files.h"

#include <QMimeData>

#include "app/qt_text.h"
#include "platform/file_system.h"
#include "platform/paths.h"

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

}  // namespace stalwick
