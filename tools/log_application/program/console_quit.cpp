#include "tools/log_application/program/console_quit.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "vek/exception.h"

namespace log_application {

namespace {

std::mutex lock;
std::condition_variable gone;
StopSignal* target = nullptr;  // guarded by `lock`

}  // namespace

ConsoleQuit::ConsoleQuit(StopSignal& stopSignal) {
    {
        const std::lock_guard guard(lock);
        target = &stopSignal;
    }
    if (SetConsoleCtrlHandler(handle, TRUE) == 0) {
        throw vek::OsError(GetLastError());
    }
}

ConsoleQuit::~ConsoleQuit() {
    {
        const std::lock_guard guard(lock);
        target = nullptr;
    }
    gone.notify_all();
    SetConsoleCtrlHandler(handle, FALSE);
}

BOOL WINAPI ConsoleQuit::handle(DWORD kind) {
    std::unique_lock guard(lock);
    if (target != nullptr) {
        target->onQuit();
    }
    if (kind != CTRL_C_EVENT && kind != CTRL_BREAK_EVENT) {
        gone.wait_for(guard, std::chrono::milliseconds(closingTimeMs),
                      [] { return target == nullptr; });
    }
    return TRUE;
}

}  // namespace log_application
