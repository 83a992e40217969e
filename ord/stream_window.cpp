// SPDX-License-Identifier: BSD-3-Clause
#include "ord/stream_window.h"

#include <cstring>

namespace stalwick {

StreamWindow::StreamWindow(InputFile& file, std::uint64_t filePosition, Access access)
    : file_(file), filePosition_(filePosition), access_(access), buffer_(kMostBytes) {}

void StreamWindow::Fill(std::size_t size) {
    if (end_ - begin_ >= size || fileEnded_) return;
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
    const std::size_t wanted = buffer_.size() - end_;
    std::size_t count = 0;
    std::uint8_t* const target = buffer_.data() + end_;
    systemError_ = access_ == Access::kInOrder ? file_.Read(target, wanted, count)
                                               : file_.ReadAt(filePosition_, target, wanted, count);
    end_ += count;
    filePosition_ += count;
    fileEnded_ = count < wanted || systemError_ != 0;
}

}  // namespace stalwick
