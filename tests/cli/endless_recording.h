// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/text_encoding.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {

/** A named pipe that holds a recording, for a command that the test will stop. POSIX systems only.
 */
class EndlessRecording {
  public:
    explicit EndlessRecording(const std::wstring& path) : path_(ToUtf8(path)) {
        ::mkfifo(path_.c_str(), 0600);
        // Both ends, so that neither this process nor the command waits for the other to open it.
        pipe_ = ::open(path_.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        const std::string header = Version1Header(2).Block();
        EXPECT_EQ(::write(pipe_, header.data(), header.size()),
                  static_cast<ssize_t>(header.size()));
        for (int i = 0; i < 100; ++i) packets_ += EncodePacket(PacketPlan());
    }
    ~EndlessRecording() { ::close(pipe_); }
    EndlessRecording(const EndlessRecording&) = delete;
    EndlessRecording& operator=(const EndlessRecording&) = delete;

    const std::string& Path() const { return path_; }

    /** Continues writing, as much as the pipe accepts. */
    void Feed() {
        for (;;) {
            const ssize_t count =
                ::write(pipe_, packets_.data() + position_, packets_.size() - position_);
            if (count <= 0) return;
            position_ = (position_ + static_cast<std::size_t>(count)) % packets_.size();
        }
    }

  private:
    std::string path_;
    std::string packets_;
    std::size_t position_ = 0;
    int pipe_ = -1;
};

/** The time between two checks of what a command does. */
inline void Pause() {
    ::usleep(2000);
}

}  // namespace stalwick::test
