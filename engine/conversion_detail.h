#pragma once

#include <string>

namespace stalwick {

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
