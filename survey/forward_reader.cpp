// SPDX-License-Identifier: BSD-3-Clause
#include "survey/forward_reader.h"

#include <algorithm>

#include "outputs/output_format.h"

namespace stalwick {

ForwardReader::ForwardReader(const RecordFile& file, std::size_t capacity)
    : file_(file),
      buffer_(capacity),
      bufferPosition_(kOutputHeaderSize),
      end_(std::max<std::uint64_t>(file.Size(), kOutputHeaderSize)) {}

std::span<const std::uint8_t> ForwardReader::Look(std::size_t size) {
    if (filled_ - offset_ < size && bufferPosition_ + filled_ < end_) Fill();
    return std::span(buffer_).subspan(offset_, std::min(size, filled_ - offset_));
}

void ForwardReader::Fill() {
    const auto kept = buffer_.begin() + static_cast<std::ptrdiff_t>(offset_);
    std::copy(kept, buffer_.begin() + static_cast<std::ptrdiff_t>(filled_), buffer_.begin());
    bufferPosition_ += offset_;
    filled_ -= offset_;
    offset_ = 0;
    const std::uint64_t next = bufferPosition_ + filled_;
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(buffer_.size() - filled_, end_ - next));
    if (const RecordFileError error = file_.ReadBytes(next, buffer_.data() + filled_, wanted)) {
        error_ = error.text;
        end_ = next;
        return;
    }
    filled_ += wanted;
}

}  // namespace stalwick
