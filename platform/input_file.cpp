// SPDX-License-Identifier: BSD-3-Clause
#include "platform/input_file.h"

#include "platform/system_error.h"

namespace stalwick {

InputFile::~InputFile() {
    Close();
}

SystemErrorCode InputFile::Open(const std::wstring& path) {
    if (IsOpen()) return SystemErrorFor(SystemErrorKind::kAlreadyExists);
    SystemErrorCode code = 0;
    do {
        code = CurrentFileCalls().OpenForReading(path, handle_);
    } while (ClassifySystemError(code) == SystemErrorKind::kInterrupted);
    return code;
}

SystemErrorCode InputFile::Close() {
    if (!IsOpen()) return 0;
    const FileHandle handle = handle_;
    handle_ = kNoFile;
    return CurrentFileCalls().Close(handle);
}

namespace {

// Repeats calls of `readSome(offset, bytes left, count)` until everything is read, the file ends or
// one fails.
template <typename ReadSome>
SystemErrorCode ReadWhole(std::size_t size, std::size_t& transferred, const ReadSome& readSome) {
    transferred = 0;
    while (transferred < size) {
        std::size_t count = 0;
        const SystemErrorCode code = readSome(transferred, size - transferred, count);
        if (ClassifySystemError(code) == SystemErrorKind::kInterrupted) continue;
        if (code != 0) return code;
        if (count == 0) break;
        transferred += count;
    }
    return 0;
}

}  // namespace

InputFile& InputFile::operator=(InputFile&& other) noexcept {
    if (this == &other) return *this;
    Close();
    handle_ = std::exchange(other.handle_, kNoFile);
    return *this;
}

SystemErrorCode InputFile::Read(void* data, std::size_t size, std::size_t& transferred) {
    auto* bytes = static_cast<std::byte*>(data);
    return ReadWhole(size, transferred,
                     [&](std::size_t done, std::size_t left, std::size_t& count) {
                         return CurrentFileCalls().Read(handle_, bytes + done, left, count);
                     });
}

SystemErrorCode InputFile::ReadAt(std::uint64_t offset, void* data, std::size_t size,
                                  std::size_t& transferred) const {
    auto* bytes = static_cast<std::byte*>(data);
    return ReadWhole(
        size, transferred, [&](std::size_t done, std::size_t left, std::size_t& count) {
            return CurrentFileCalls().ReadAt(handle_, offset + done, bytes + done, left, count);
        });
}

std::uint64_t InputFile::Size() const {
    std::uint64_t size = 0;
    return CurrentFileCalls().QuerySize(handle_, size) == 0 ? size : 0;
}

}  // namespace stalwick
