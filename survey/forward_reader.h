// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "outputs/record_file.h"

namespace stalwick {

// Reads the records of an output from the first byte to the last, with lookahead. The file must
// outlive it.
class ForwardReader {
  public:
    // Reads at most `capacity` bytes ahead.
    ForwardReader(const RecordFile& file, std::size_t capacity);

    // The bytes from the position on, at most `size`; fewer at the end of the file. Valid until the
    // next call.
    std::span<const std::uint8_t> Look(std::size_t size);
    // Advances by bytes that were peeked at.
    void Skip(std::size_t size) { offset_ += size; }

    [[nodiscard]] std::uint64_t Position() const {
        return bufferPosition_ + offset_;
    }  // byte of the file
    [[nodiscard]] std::uint64_t End() const { return end_; }
    // Why the file could not be read to its end; empty if it could.
    const std::wstring& Error() const { return error_; }

  private:
    void Fill();

    const RecordFile& file_;
    std::vector<std::uint8_t> buffer_;
    std::uint64_t bufferPosition_;  // byte of the file
    std::size_t filled_ = 0;        // bytes in the buffer
    std::size_t offset_ = 0;
    std::uint64_t end_;  // of the file, or where reading failed
    std::wstring error_;
};

}  // namespace stalwick
