#pragma once

#include <cstdint>
#include <string>

namespace stalwick {

// Of a conversion that a lack of memory has ended.
inline constexpr wchar_t kOutputsMayLackTheirEnd[] =
    L"every output that says that it was not closed may lack its end";

// Something that the status text does not say, in one plain line: what, where, how much, what to
// do. The text names no option of a program: who shows it adds advice of its own by `cause`.
struct ConversionDetail {
    // In the order of their weight.
    enum class Kind {
        kNote,       // worth knowing; nothing is missing
        kLoss,       // every output is what it should be, but the recording itself lost data
        kIncomplete  // an output is missing or incomplete
    };
    // What a program may have its own advice for.
    enum class Cause {
        kOther,
        // The recording could not be read or decoded to its end. OutputSettings::keepPartialBlocks
        // keeps more of what stands before that place.
        kStoppedInTheMiddle,
        // The process may not open enough files: `openFilesNeeded`, fewer outputs or fewer
        // conversions at a time.
        kOpenFileLimit,
        // Fewer outputs or fewer conversions at a time need less.
        kOutOfMemory
    };
    Kind kind = Kind::kNote;
    std::wstring text;
    Cause cause = Cause::kOther;
    std::uint64_t openFilesNeeded = 0;  // by the whole process; with kOpenFileLimit only
};

}  // namespace stalwick
