#pragma once

#include <string>

namespace stalwick {

// Of a conversion that an output's failure or a lack of memory has ended.
inline constexpr wchar_t kOutputsMayLackTheirEnd[] =
    L"every output that says that it was not closed may lack its end";

// Something that the status text does not say, in one plain line: which file, where, why, what to
// do.
struct ConversionDetail {
    enum class Kind {
        kNote,       // worth knowing; every output is what it should be
        kIncomplete  // an output is missing or incomplete
    };
    Kind kind = Kind::kNote;
    std::wstring text;
};

}  // namespace stalwick
