// SPDX-License-Identifier: BSD-3-Clause
#include "writers/vtx_file_io.h"

#include "platform/text_encoding.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <iterator>
#include <span>

using VtxDataTypes::kFailure;
using VtxDataTypes::kSuccess;
using VtxDataTypes::VtxRetVal;

namespace Veltrosyn {

namespace {

constexpr std::size_t kSyncThreads = 16;
// Threads are started after this time, because starting all takes longer: data that are only in
// memory, or on the disk already, are synced by then.
constexpr std::chrono::microseconds kSyncWithoutThreads{300};

using Files = std::span<const std::unique_ptr<stalwick::DataFile>>;

VtxRetVal ToResult(bool succeeded) {
    return succeeded ? kSuccess : kFailure;
}

// Each thread syncs every n-th file, so no two threads use the same file.
bool SyncAtOnce(Files files) {
    const auto syncFrom = [files](std::size_t first) {
        bool synced = true;
        for (std::size_t i = first; i < files.size(); i += kSyncThreads) {
            synced = files[i]->Sync() && synced;
        }
        return synced;
    };
    std::vector<std::future<bool>> others;
    for (std::size_t i = 1; i < std::min(kSyncThreads, files.size()); ++i) {
        // If no thread can be started, this one does the work below.
        others.push_back(std::async(std::launch::async | std::launch::deferred, syncFrom, i));
    }
    bool succeeded = syncFrom(0);
    for (std::future<bool>& other : others) succeeded = other.get() && succeeded;
    return succeeded;
}

}  // namespace

VtxFileIO::VtxFileIO(const stalwick::OutputSettings& settings, stalwick::BlockPool* pool)
    : settings_(settings), pool_(pool) {}

VtxFileIO::~VtxFileIO() = default;

stalwick::DataFile* VtxFileIO::Find(int handle) {
    const auto position = static_cast<std::size_t>(handle);
    return handle >= 0 && position < files_.size() ? files_[position].get() : nullptr;
}

VtxRetVal VtxFileIO::OpenVtxOutputFile(const wchar_t* fileName,
                                       VtxDataTypes::VtxDataType /*dataType*/, int& handle,
                                       int /*flag*/) {
    auto file = std::make_unique<stalwick::DataFile>(settings_, pool_);
    if (const stalwick::SystemErrorCode code = file->Create(fileName); code != 0) {
        // It is not a failure yet if another program has just taken the name: the caller chooses
        // another one.
        if (stalwick::WasNameTaken(code, fileName)) return VtxDataTypes::kFileExists;
        closed_.push_back(std::move(file));
        return kFailure;
    }
    handle = static_cast<int>(files_.size());
    files_.push_back(std::move(file));
    return kSuccess;
}

VtxRetVal VtxFileIO::SetHeader(int handle, const wchar_t* headerText) {
    stalwick::DataFile* file = Find(handle);
    return ToResult(file != nullptr && file->SetHeader(stalwick::ToUtf8(headerText)));
}

VtxRetVal VtxFileIO::WriteDataToFile(int handle, VtxDataTypes::CRRec* records, int length) {
    stalwick::DataFile* file = Find(handle);
    if (file == nullptr || length < 0) return kFailure;
    const auto size = static_cast<std::size_t>(length);
    return ToResult(pool_ != nullptr ? file->Submit(reinterpret_cast<std::byte*>(records), size)
                                     : file->Append(records, size));
}

VtxRetVal VtxFileIO::WriteDataToFile(int handle, VtxDataTypes::EventRec* records, int length) {
    stalwick::DataFile* file = Find(handle);
    return ToResult(file != nullptr && length >= 0 &&
                    file->Append(records, static_cast<std::size_t>(length)));
}

VtxRetVal VtxFileIO::CutDataTo(int handle, std::uint64_t length) {
    stalwick::DataFile* file = Find(handle);
    return ToResult(file != nullptr && file->CutTo(length));
}

VtxRetVal VtxFileIO::CompleteWrites() {
    bool succeeded = true;
    for (const auto& file : files_) succeeded = file->CompleteAppends() && succeeded;
    return ToResult(succeeded);
}

VtxRetVal VtxFileIO::SyncFiles() {
    if (!settings_.syncBeforeFinalHeader) return kSuccess;
    CompleteWrites();  // the queue is for one caller, not for all the threads below
    const auto start = std::chrono::steady_clock::now();
    std::size_t done = 0;
    bool succeeded = true;
    while (done < files_.size() && std::chrono::steady_clock::now() - start < kSyncWithoutThreads) {
        succeeded = files_[done++]->Sync() && succeeded;
    }
    return ToResult(
        SyncAtOnce({files_.begin() + static_cast<std::ptrdiff_t>(done), files_.end()}) &&
        succeeded);
}

VtxRetVal VtxFileIO::CloseAllOutputFiles() {
    closed_.reserve(closed_.size() + files_.size());
    bool succeeded = true;
    for (const auto& file : files_) succeeded = file->Close() && succeeded;
    std::move(files_.begin(), files_.end(), std::back_inserter(closed_));
    files_.clear();
    return ToResult(succeeded);
}

std::vector<stalwick::OutputFileState> VtxFileIO::Files() const {
    std::vector<stalwick::OutputFileState> states;
    for (const auto& file : closed_) states.push_back(file->State());
    for (const auto& file : files_) states.push_back(file->State());
    return states;
}

stalwick::OutputTotals VtxFileIO::Totals() const {
    stalwick::OutputTotals totals;
    for (const auto& file : closed_) totals += file->Totals();
    for (const auto& file : files_) totals += file->Totals();
    return totals;
}

}  // namespace Veltrosyn
