// log_application::ConsoleQuit: takes the console's wish that the program quits to the stop signal.
#pragma once

#include "tools/log_application/program/stop_signal.h"
#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace log_application {

// One at a time. The program ends while an event may be under way, which the handler of a VekPal
// doesn't bear: this one does.
class ConsoleQuit : public vek::NoCopy {
  public:
    // The longest that the end of a console waits for the end of the program, in milliseconds. The
    // system itself waits for 5 seconds.
    static constexpr int closingTimeMs = 4500;

    // `stopSignal` has to outlive this. Throws vek::OsError. Stands on SetConsoleCtrlHandler.
    explicit ConsoleQuit(StopSignal& stopSignal);

    // From now on the signal isn't touched any more.
    ~ConsoleQuit();

    // What the system calls on a thread of its own: Ctrl-C and Ctrl-Break request the stop. So do
    // the closing of the console, the log-off and the shutdown, at which the system ends the
    // process as soon as this returns: it does so once the ConsoleQuit has gone.
    static BOOL WINAPI handle(DWORD kind);
};

}  // namespace log_application
