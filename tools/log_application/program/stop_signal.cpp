#include "tools/log_application/program/stop_signal.h"

#include <iostream>

#include "tools/log_application/program/exit_code.h"
#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/thread/scope_guard.h"

namespace log_application {

void StopSignal::onQuit() {
    if (++quits > 1) {
        // Other threads may hold any lock: an orderly end could deadlock.
        TerminateProcess(GetCurrentProcess(), exitLost);
    }
    request();
}

void StopSignal::request() {
    if (requested.exchange(true)) {
        return;
    }
    try {
        {
            const vek::thread::ScopeGuard guard(condition);
            condition.wakeAll();
        }
        wakeup.notify();
    } catch (const vek::Exception& error) {
        std::cerr << "log_application: a thread can't be woken: " << error.what() << std::endl;
    }
}

bool StopSignal::waitUntil(const vek::time::MonotonicClock& deadline) {
    const vek::thread::ScopeGuard guard(condition);
    while (!requested && condition.waitUntil(deadline)) {
    }
    return requested;
}

bool StopSignal::waitFor(std::int64_t milliseconds) {
    vek::time::MonotonicClock deadline(true);
    deadline += milliseconds;
    return waitUntil(deadline);
}

}  // namespace log_application
