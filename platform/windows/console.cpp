// SPDX-License-Identifier: BSD-3-Clause
#include "platform/console.h"

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <io.h>
#include <stdio.h>

#include "platform/windows/windows_api.h"

namespace stalwick {

namespace {

std::atomic<std::atomic<Interruption>*> interruptionTarget{nullptr};
UINT previousOutputCodePage = 0;

bool Request(Interruption kind) {
    std::atomic<Interruption>* target = interruptionTarget.exchange(nullptr);
    if (target == nullptr) return false;
    target->store(kind, std::memory_order_relaxed);
    return true;
}

// Runs on a thread that the system starts for it. Returning FALSE lets the system end the process.
BOOL WINAPI HandleControl(DWORD event) {
    switch (event) {
        case CTRL_C_EVENT:
        case CTRL_BREAK_EVENT:
            return Request(Interruption::kInterrupt) ? TRUE : FALSE;
        case CTRL_CLOSE_EVENT:
        case CTRL_LOGOFF_EVENT:
        case CTRL_SHUTDOWN_EVENT:
            if (!Request(event == CTRL_CLOSE_EVENT ? Interruption::kHangUp
                                                   : Interruption::kTerminate)) {
                return FALSE;
            }
            // Returning would end the process at once. While this waits, the work is finished in
            // order; the system waits some seconds for it.
            ::Sleep(INFINITE);
            return TRUE;
        default:
            return FALSE;
    }
}

void RestoreOutputCodePage() {
    ::SetConsoleOutputCP(previousOutputCodePage);
}

HANDLE StandardError() {
    return ::GetStdHandle(STD_ERROR_HANDLE);
}

}  // namespace

void WatchInterruptions(std::atomic<Interruption>& target) {
    interruptionTarget.store(&target);
    // A child inherits Ctrl-C being ignored; this undoes it.
    ::SetConsoleCtrlHandler(nullptr, FALSE);
    ::SetConsoleCtrlHandler(HandleControl, TRUE);
}

void EndByInterrupt() {}

void PrepareConsole() {
    // Lines end exactly as the program writes them, so that scripts read the same bytes everywhere.
    ::_setmode(::_fileno(stdout), _O_BINARY);
    ::_setmode(::_fileno(stderr), _O_BINARY);
    previousOutputCodePage = ::GetConsoleOutputCP();
    if (previousOutputCodePage == 0 || previousOutputCodePage == CP_UTF8) return;
    // The code page belongs to the console, which outlives the program.
    if (::SetConsoleOutputCP(CP_UTF8) != FALSE) std::atexit(RestoreOutputCodePage);
}

// Streams alternate between wide and narrow text there.
bool WriteToStandardOutput(std::string_view bytes) {
    return std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size();
}

bool StandardErrorIsTerminal() {
    DWORD mode = 0;
    return ::GetConsoleMode(StandardError(), &mode) != FALSE;
}

int TerminalWidth() {
    constexpr int kUsualWidth = 80;
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (::GetConsoleScreenBufferInfo(StandardError(), &info) == FALSE) return kUsualWidth;
    return info.srWindow.Right - info.srWindow.Left + 1;
}

}  // namespace stalwick
