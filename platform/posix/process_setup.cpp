#include "platform/process_setup.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace stalwick {

namespace {

// A standard stream that the caller closed would be the number of the next file that is opened, and
// a message to it would go into that file. In its place comes a file that takes nothing.
void OccupyClosedStreams() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (::fcntl(stream, F_GETFD) != -1 || errno != EBADF) continue;
        ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

}  // namespace

void PrepareProcess() {
    // A reader that went away (a closed pipe) is an error of that write, not the end of the run.
    std::signal(SIGPIPE, SIG_IGN);
    // So is a file that reaches the limit of its size (ulimit -f).
    std::signal(SIGXFSZ, SIG_IGN);
    OccupyClosedStreams();
}

}  // namespace stalwick
