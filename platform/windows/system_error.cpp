// SPDX-License-Identifier: BSD-3-Clause
#include "platform/system_error.h"

#include "platform/windows/windows_api.h"

namespace stalwick {

SystemErrorKind ClassifySystemError(SystemErrorCode code) {
    switch (code) {
        case ERROR_SUCCESS:
            return SystemErrorKind::kNone;
        case ERROR_RETRY:
            return SystemErrorKind::kInterrupted;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return SystemErrorKind::kAlreadyExists;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
        case ERROR_DISK_QUOTA_EXCEEDED:
            return SystemErrorKind::kNoSpace;
        case ERROR_TOO_MANY_OPEN_FILES:
            return SystemErrorKind::kTooManyOpenFiles;
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
            return SystemErrorKind::kAccessDenied;
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
            return SystemErrorKind::kNotFound;
        case ERROR_FILE_TOO_LARGE:
            return SystemErrorKind::kFileTooLarge;
        case ERROR_FILENAME_EXCED_RANGE:
            return SystemErrorKind::kNameTooLong;
        default:
            return SystemErrorKind::kOther;
    }
}

SystemErrorCode SystemErrorFor(SystemErrorKind kind) {
    switch (kind) {
        case SystemErrorKind::kNone:
            return ERROR_SUCCESS;
        case SystemErrorKind::kInterrupted:
            return ERROR_RETRY;
        case SystemErrorKind::kAlreadyExists:
            return ERROR_FILE_EXISTS;
        case SystemErrorKind::kNoSpace:
            return ERROR_DISK_FULL;
        case SystemErrorKind::kTooManyOpenFiles:
            return ERROR_TOO_MANY_OPEN_FILES;
        case SystemErrorKind::kAccessDenied:
            return ERROR_ACCESS_DENIED;
        case SystemErrorKind::kNotFound:
            return ERROR_FILE_NOT_FOUND;
        case SystemErrorKind::kFileTooLarge:
            return ERROR_FILE_TOO_LARGE;
        case SystemErrorKind::kNameTooLong:
            return ERROR_FILENAME_EXCED_RANGE;
        case SystemErrorKind::kOther:
            break;
    }
    return ERROR_IO_DEVICE;
}

std::wstring SystemErrorText(SystemErrorCode code) {
    constexpr DWORD kLongest = 512;
    wchar_t text[kLongest] = {};
    const DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
        nullptr, static_cast<DWORD>(code), 0, text, kLongest, nullptr);
    std::wstring message(text, length);
    // The system's texts are sentences; here they are part of one.
    message.erase(message.find_last_not_of(L" .\r\n") + 1);
    return message.empty() ? L"error " + std::to_wstring(code) : message;
}

}  // namespace stalwick
