#pragma once

#include <string>
#include <string_view>

namespace stalwick {

// A document that a command writes beside its outputs. An existing file is taken for an earlier
// one, and replaced, only if it begins as they all do.
struct OwnDocument {
    std::string_view beginning;
    std::wstring_view name;        // "report"
    std::wstring_view whenTaken;   // what to do when another file has its name
    std::wstring_view afterwards;  // what to do when it could not be written
};

// All of these return nothing, or one line that says why not.

// Whether the name is free or such a document has it.
[[nodiscard]] std::wstring RefuseName(const OwnDocument& document, const std::wstring& path);
// Whether a file can be made in its directory.
[[nodiscard]] std::wstring RefuseDirectory(const OwnDocument& document, const std::wstring& path);
// Puts the whole document there, or leaves what was there.
[[nodiscard]] std::wstring WriteDocument(const OwnDocument& document, const std::wstring& path,
                                         const std::string& text);

}  // namespace stalwick
