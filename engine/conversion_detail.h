// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>

namespace stalwick {

// For a conversion that ended because memory ran out.
inline constexpr wchar_t kOutputsMayLackTheirEnd[] =
    L"every output that says that it was not closed may lack its end";

// Something that the status text does not cover, in one plain line: what, where, how much, what to
// do. The text names no option of a program: whoever displays it adds its own advice, depending on
// `cause`.
struct ConversionDetail {
    // In order of weight.
    enum class Kind {
        kNote,       // worth knowing; nothing is missing
        kLoss,       // every output is as it should be, but the recording itself lost data
        kIncomplete  // an output is missing or incomplete
    };
    // What a program may have additional advice for.
    enum class Cause {
        kOther,
        // The recording is damaged and the conversion ended there; OnDamage::kSkip keeps all that
        // precedes the damage and continues after it.
        kDamaged,
        // The recording could not be read to its end. OutputSettings::keepPartialBlocks keeps more
        // of what precedes that place.
        kInputFailed,
        // The process cannot open enough files: raise the limit to `openFilesNeeded`, or choose
        // fewer outputs or fewer conversions at a time.
        kOpenFileLimit,
        // Fewer outputs or fewer conversions at a time need less.
        kOutOfMemory
    };
    Kind kind = Kind::kNote;
    std::wstring text;
    Cause cause = Cause::kOther;
    std::uint64_t openFilesNeeded = 0;  // by the whole process; only with kOpenFileLimit
};

}  // namespace stalwick
