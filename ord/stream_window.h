// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/input_file.h"

namespace stalwick {

// The part of a file's stream that is in memory. It moves forward through the file.
class StreamWindow {
  public:
    enum class Access {
        kInOrder,    // continues from the current read position; also for pipes
        kByPosition  // only for regular files
    };

    // `filePosition`: the position of the window's first byte in the file. The file must outlive
    // the window.
    StreamWindow(InputFile& file, std::uint64_t filePosition, Access access);

    // Reads until the window has `size` bytes, at most kMostBytes, or the file ends.
    void Fill(std::size_t size);
    // Drops `count` bytes from the front; at most the window's size.
    void Advance(std::size_t count) { begin_ += count; }

    [[nodiscard]] std::span<const std::uint8_t> Bytes() const {
        return {buffer_.data() + begin_, end_ - begin_};
    }
    // The position of the window's first byte in the file.
    [[nodiscard]] std::uint64_t Position() const { return filePosition_ - (end_ - begin_); }
    // Whether the file ends with the window.
    [[nodiscard]] bool ReachesEnd() const { return fileEnded_; }
    // The system's reason if the window ends because a read failed; otherwise 0.
    [[nodiscard]] SystemErrorCode SystemError() const { return systemError_; }

    static constexpr std::size_t kMostBytes = std::size_t{1} << 17U;

  private:
    InputFile& file_;
    std::uint64_t filePosition_;  // of the next byte to read
    Access access_;
    std::vector<std::uint8_t> buffer_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool fileEnded_ = false;
    SystemErrorCode systemError_ = 0;
};

}  // namespace stalwick
