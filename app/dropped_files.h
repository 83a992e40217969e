#pragma once

#include <string>
#include <vector>

class QMimeData;

namespace stalwick {

// The paths of the recordings (.ord, in any case of letters) among what is dropped; folders and
// other files are left out.
std::vector<std::wstring> DroppedRecordings(const QMimeData* data);

}  // namespace stalwick
