// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/memory_file_calls.h"

#include <algorithm>
#include <cstring>

#include "platform/system_error.h"

namespace stalwick::test {

FileHandle MemoryFileCalls::Add(std::string& bytes) {
    opened_.push_back({&bytes, 0});
    ++openCount;
    return static_cast<FileHandle>(opened_.size() - 1);
}

SystemErrorCode MemoryFileCalls::OpenForReading(const std::wstring& path, FileHandle& handle) {
    const std::scoped_lock lock(mutex_);
    const auto file = files.find(path);
    if (file == files.end()) return SystemErrorFor(SystemErrorKind::kNotFound);
    handle = Add(file->second);
    return 0;
}

SystemErrorCode MemoryFileCalls::Read(FileHandle handle, void* data, std::size_t size,
                                      std::size_t& transferred) {
    const std::scoped_lock lock(mutex_);
    OpenFile& file = At(handle);
    transferred = Copy(*file.bytes, file.position, data, size);
    file.position += transferred;
    return 0;
}

SystemErrorCode MemoryFileCalls::ReadAt(FileHandle handle, std::uint64_t offset, void* data,
                                        std::size_t size, std::size_t& transferred) {
    const std::scoped_lock lock(mutex_);
    transferred = Copy(*At(handle).bytes, static_cast<std::size_t>(offset), data, size);
    return 0;
}

std::size_t MemoryFileCalls::Copy(const std::string& bytes, std::size_t position, void* data,
                                  std::size_t size) const {
    const std::size_t left = bytes.size() - std::min(position, bytes.size());
    const std::size_t count = std::min({size, left, mostBytesPerRead});
    std::memcpy(data, bytes.data() + std::min(position, bytes.size()), count);
    return count;
}

SystemErrorCode MemoryFileCalls::QuerySize(FileHandle handle, std::uint64_t& size) {
    const std::scoped_lock lock(mutex_);
    size = At(handle).bytes->size();
    return 0;
}

SystemErrorCode MemoryFileCalls::CreateExclusive(const std::wstring& path, FileHandle& handle) {
    const std::scoped_lock lock(mutex_);
    const auto [file, isNew] = files.try_emplace(path);
    if (!isNew) return SystemErrorFor(SystemErrorKind::kAlreadyExists);
    handle = Add(file->second);
    return 0;
}

SystemErrorCode MemoryFileCalls::WriteAt(FileHandle handle, std::uint64_t offset, const void* data,
                                         std::size_t size, std::size_t& transferred) {
    const std::scoped_lock lock(mutex_);
    std::string& bytes = *At(handle).bytes;
    bytes.resize(std::max<std::size_t>(bytes.size(), offset + size));
    std::memcpy(bytes.data() + offset, data, size);
    transferred = size;
    return 0;
}

SystemErrorCode MemoryFileCalls::StartWriteBack(FileHandle /*handle*/, std::uint64_t /*offset*/,
                                                std::uint64_t /*size*/) {
    return 0;
}

SystemErrorCode MemoryFileCalls::Truncate(FileHandle handle, std::uint64_t size) {
    const std::scoped_lock lock(mutex_);
    At(handle).bytes->resize(size);
    return 0;
}

SystemErrorCode MemoryFileCalls::SyncData(FileHandle /*handle*/) {
    return 0;
}

SystemErrorCode MemoryFileCalls::SyncDirectory(const std::wstring& /*path*/) {
    return 0;
}

SystemErrorCode MemoryFileCalls::QueryRemoved(FileHandle /*handle*/, bool& removed) {
    removed = false;
    return 0;
}

SystemErrorCode MemoryFileCalls::Close(FileHandle handle) {
    const std::scoped_lock lock(mutex_);
    At(handle).bytes = nullptr;
    --openCount;
    return 0;
}

}  // namespace stalwick::test
