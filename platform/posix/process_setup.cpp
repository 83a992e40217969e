// SPDX-License-Identifier: BSD-3-Clause
#include "platform/process_setup.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace stalwick {

namespace {

// If the caller closed a standard stream, the next opened file would get its number, and a message
// would go into that file. A file that accepts nothing takes the number instead.
void OccupyClosedStreams() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (::fcntl(stream, F_GETFD) != -1 || errno != EBADF) continue;
        ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

}  // namespace

void PrepareProcess() {
    // If the reader of a pipe is gone, that write fails; the run does not end.
    std::signal(SIGPIPE, SIG_IGN);
    // The same applies to a file that reaches the limit of its size (ulimit -f).
    std::signal(SIGXFSZ, SIG_IGN);
    OccupyClosedStreams();
}

}  // namespace stalwick
