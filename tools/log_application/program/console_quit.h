// log_application::ConsoleQuit: requests the stop when the console asks the program to quit.
#pragma once

#include "tools/log_application/program/stop_signal.h"
#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace log_application {

// At most one instance may exist. Its destruction is safe while the system calls `handle` on
// another thread, which isn't so for the handler of a VekPal.
class ConsoleQuit : public vek::NoCopy {
  public:
    // The longest time, in milliseconds, that `handle` holds up the closing of the console. The
    // system ends the process after 5 seconds.
    static constexpr int closingTimeMs = 4500;

    // `stopSignal` isn't owned and must outlive this. Calls SetConsoleCtrlHandler. Throws
    // vek::OsError.
    explicit ConsoleQuit(StopSignal& stopSignal);

    // The stop signal isn't used afterwards. Calls SetConsoleCtrlHandler.
    ~ConsoleQuit();

    // Called by the system on a thread of its own. Requests the stop. For the closing of the
    // console, log-off and shutdown the system ends the process when this returns: so it then
    // blocks until the ConsoleQuit is destroyed, or for `closingTimeMs`.
    static BOOL WINAPI handle(DWORD kind);
};

}  // namespace log_application
