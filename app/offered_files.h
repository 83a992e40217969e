#pragma once

#include <string>
#include <vector>

class QMimeData;

namespace stalwick {

// Files that reach the window without its file dialog. Only recordings count: files named .ord, in
// any case of letters. A broken link of such a name is one too: its conversion says what is wrong.

// The paths of the recordings among what is dropped; folders and other files are left out.
std::vector<std::wstring> DroppedRecordings(const QMimeData* data);

// The full paths of the recordings among the program's arguments, which are narrow. Of any other
// argument it says on standard error that it was left out.
std::vector<std::wstring> RecordingsInArguments(const std::vector<std::string>& arguments);

}  // namespace stalwick
