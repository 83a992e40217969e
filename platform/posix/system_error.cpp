// SPDX-License-Identifier: BSD-3-Clause
#include "platform/system_error.h"

#include <cerrno>
#include <system_error>

#include "platform/text_encoding.h"

namespace stalwick {

SystemErrorKind ClassifySystemError(SystemErrorCode code) {
    switch (code) {
        case 0:
            return SystemErrorKind::kNone;
        case EINTR:
            return SystemErrorKind::kInterrupted;
        case EEXIST:
            return SystemErrorKind::kAlreadyExists;
        case ENOSPC:
        case EDQUOT:
            return SystemErrorKind::kNoSpace;
        case EMFILE:
        case ENFILE:
            return SystemErrorKind::kTooManyOpenFiles;
        case EACCES:
        case EPERM:
        case EROFS:
            return SystemErrorKind::kAccessDenied;
        case ENOENT:
        case ENOTDIR:
            return SystemErrorKind::kNotFound;
        case EFBIG:
            return SystemErrorKind::kFileTooLarge;
        case ENAMETOOLONG:
            return SystemErrorKind::kNameTooLong;
        default:
            return SystemErrorKind::kOther;
    }
}

SystemErrorCode SystemErrorFor(SystemErrorKind kind) {
    switch (kind) {
        case SystemErrorKind::kNone:
            return 0;
        case SystemErrorKind::kInterrupted:
            return EINTR;
        case SystemErrorKind::kAlreadyExists:
            return EEXIST;
        case SystemErrorKind::kNoSpace:
            return ENOSPC;
        case SystemErrorKind::kTooManyOpenFiles:
            return EMFILE;
        case SystemErrorKind::kAccessDenied:
            return EACCES;
        case SystemErrorKind::kNotFound:
            return ENOENT;
        case SystemErrorKind::kFileTooLarge:
            return EFBIG;
        case SystemErrorKind::kNameTooLong:
            return ENAMETOOLONG;
        case SystemErrorKind::kOther:
            break;
    }
    return EIO;
}

std::wstring SystemErrorText(SystemErrorCode code) {
    return FromUtf8(std::generic_category().message(code));
}

}  // namespace stalwick
