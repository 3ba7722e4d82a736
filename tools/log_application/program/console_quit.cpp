#include "tools/log_application/program/console_quit.h"

#include <chrono>
#include <condition_variable>

#include "vek/base/std_mutex.h"
#include "vek/exception.h"

namespace log_application {

namespace {

vek::StdMutex lock;
std::condition_variable gone;
StopSignal* target VEK_GUARDED_BY(lock) = nullptr;

}  // namespace

ConsoleQuit::ConsoleQuit(StopSignal& stopSignal) {
    {
        const vek::StdGuard guard(lock);
        target = &stopSignal;
    }
    if (SetConsoleCtrlHandler(handle, TRUE) == 0) {
        throw vek::OsError(GetLastError());
    }
}

ConsoleQuit::~ConsoleQuit() {
    {
        const vek::StdGuard guard(lock);
        target = nullptr;
    }
    gone.notify_all();
    SetConsoleCtrlHandler(handle, FALSE);
}

BOOL WINAPI ConsoleQuit::handle(DWORD kind) {
    vek::StdGuard guard(lock);
    if (target != nullptr) {
        target->onQuit();
    }
    if (kind != CTRL_C_EVENT && kind != CTRL_BREAK_EVENT) {
        const auto deadline =
            std::chrono::steady_clock::now() + std::chrono::milliseconds(closingTimeMs);
        while (target != nullptr &&
               gone.wait_until(guard.forWait(), deadline) != std::cv_status::timeout) {
        }
    }
    return TRUE;
}

}  // namespace log_application
