// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

class QMimeData;

namespace stalwick {

// Files that reach the window without its file dialog. Only recordings count: files named .ord, in
// any letter case. A broken link with such a name counts too: its conversion reports what is wrong.

// The paths of the recordings among dropped items; folders and other files are left out.
std::vector<std::wstring> DroppedRecordings(const QMimeData* data);

// The full paths of the recordings among the program's arguments, which are narrow. Reports on
// standard error that any other argument is ignored.
std::vector<std::wstring> RecordingsInArguments(const std::vector<std::string>& arguments);

}  // namespace stalwick
