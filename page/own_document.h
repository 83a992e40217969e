// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <string_view>

namespace stalwick {

// A document that a command writes next to its outputs. An existing file counts as an earlier one,
// and is replaced, only if it begins like all of them.
struct OwnDocument {
    std::string_view beginning;
    std::wstring_view name;        // "report"
    std::wstring_view whenTaken;   // what to do if another file has its name
    std::wstring_view afterwards;  // what to do if it could not be written
};

// All of these return nothing, or one line with the reason why not.

// Whether the name is free or belongs to such a document.
[[nodiscard]] std::wstring RefuseName(const OwnDocument& document, const std::wstring& path);
// Whether a file can be created in its directory.
[[nodiscard]] std::wstring RefuseDirectory(const OwnDocument& document, const std::wstring& path);
// Writes the whole document there, or leaves the existing file.
[[nodiscard]] std::wstring WriteDocument(const OwnDocument& document, const std::wstring& path,
                                         const std::string& text);

}  // namespace stalwick
