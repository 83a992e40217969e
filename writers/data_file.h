// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "outputs/output_format.h"
#include "platform/output_file.h"
#include "writers/block_pool.h"
#include "writers/output_settings.h"

namespace stalwick {

// What was created and written, including header blocks.
struct OutputTotals {
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;

    OutputTotals& operator+=(const OutputTotals& other) {
        files += other.files;
        bytes += other.bytes;
        return *this;
    }
};

// The first failed call on an output file: "cannot <action> <path>: <reason>; <advice>".
struct OutputFailure {
    std::wstring action;
    std::wstring reason;
    std::wstring advice;

    bool operator==(const OutputFailure&) const = default;
};

// The state of an output file so far.
struct OutputFileState {
    std::wstring path;
    bool created = false;
    std::uint32_t headers = 0;    // set so far: the second one of a file is its last
    std::uint64_t dataBytes = 0;  // in the file after its header
    std::optional<OutputFailure> failure;
};

// One output file: a header block that can be rewritten, followed by data that only grow. Every
// kind of output has this form (docs/output-files.md).
//
// The file is created, and never opened or overwritten. After a failure it accepts nothing more, so
// that it keeps the beginning of its data and the header it had then. Used by one thread.
// Operations return whether they succeeded; State() gives the reason if not.
//
// With a pool, Submit only hands a block over, and a later call reports a failure. All other
// operations wait for the blocks handed over before.
class DataFile final : private WriteTarget {
  public:
    explicit DataFile(const OutputSettings& settings, BlockPool* pool = nullptr)
        : settings_(settings), pool_(pool) {}
    ~DataFile() override;
    DataFile(const DataFile&) = delete;
    DataFile& operator=(const DataFile&) = delete;

    // Fails with the system's "already exists" if anything has the name.
    [[nodiscard]] SystemErrorCode Create(const std::wstring& path);
    [[nodiscard]] bool IsOpen() const { return file_.IsOpen(); }

    // Writes the text, as UTF-8, at the file's start. Data appended before are on the disk first,
    // unless the settings specify otherwise.
    [[nodiscard]] bool SetHeader(std::string_view text, std::size_t mostBytes = kOutputHeaderSize);
    [[nodiscard]] bool Append(const void* data, std::size_t size);
    // Appends the beginning of a block of the pool, which takes the block back, even on failure.
    bool Submit(std::byte* block, std::size_t size);
    // Truncates the data to their first `dataSize` bytes if there are more.
    bool CutTo(std::uint64_t dataSize);
    bool Close();

    // Waits for blocks handed over; also after Close.
    [[nodiscard]] OutputFileState State() const;

    // Waits for blocks handed over; returns false if the file has failed by then.
    bool CompleteAppends() const;

    // Waits until the appended data are on the disk, unless the settings specify otherwise. Call it
    // only after CompleteAppends: it does not touch the pool and its queue, so several threads can
    // sync several files at a time.
    [[nodiscard]] bool Sync();

    // Empty if the file was never created; also after Close.
    [[nodiscard]] OutputTotals Totals() const;

  private:
    void PerformAppend(const void* data, std::size_t size) noexcept override;
    bool Failed() const { return failed_.load(std::memory_order_acquire); }
    bool Refuse(const OutputFailure& failure);
    bool Check(SystemErrorCode code, const wchar_t* action) noexcept;

    OutputSettings settings_;
    BlockPool* pool_;
    OutputFile file_;
    std::wstring path_;
    bool created_ = false;
    std::uint32_t headers_ = 0;
    std::uint64_t dataSize_ = 0;
    std::uint64_t writeBackEnd_ = 0;  // of the data whose write-back was started
    bool hasUnsyncedData_ = false;
    // The failure, stored without allocating: a full disk may come with full memory.
    const wchar_t* failedAction_ = nullptr;
    SystemErrorCode failedCode_ = 0;
    OutputFailure refusal_;            // instead of a system error
    std::atomic<bool> failed_{false};  // set after these, by the thread that failed
};

// Whether a creation failed only because a file had taken the name.
[[nodiscard]] bool WasNameTaken(SystemErrorCode code, const std::wstring& path);

// The failure of a system call.
[[nodiscard]] OutputFailure MakeFailure(std::wstring_view action, SystemErrorCode code);

// The failure in one line.
[[nodiscard]] std::wstring DescribeFailure(const OutputFailure& failure, const std::wstring& path);
[[nodiscard]] std::wstring DescribeFailure(std::wstring_view action, const std::wstring& path,
                                           SystemErrorCode code);

}  // namespace stalwick
