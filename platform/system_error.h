// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include "platform/file_calls.h"

namespace stalwick {

// The kinds of failure for which the program has advice or its own rules.
enum class SystemErrorKind {
    kNone,
    kInterrupted,
    kAlreadyExists,
    kNoSpace,
    kTooManyOpenFiles,
    kAccessDenied,
    kNotFound,
    kFileTooLarge,  // for the file system, or a limit of the process
    kNameTooLong,
    kOther
};

[[nodiscard]] SystemErrorKind ClassifySystemError(SystemErrorCode code);

// An error number of that kind, for the program's own refusals.
[[nodiscard]] SystemErrorCode SystemErrorFor(SystemErrorKind kind);

// The operating system's reason, for example "No space left on device".
[[nodiscard]] std::wstring SystemErrorText(SystemErrorCode code);

}  // namespace stalwick
