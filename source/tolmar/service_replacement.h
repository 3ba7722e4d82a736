// tolmar::ServiceReplacement: stops the service, swaps its executable, starts it, watches it, and
// tries to go back if it doesn't run.
//
// The waits, the numbers of attempts and the ignored results are the contract of this procedure.
// README.md lists every state that it can end in.
#pragma once

#include "source/tolmar/system.h"
#include "vek/log/logger.h"

namespace tolmar {

// For one thread. Reads helperDirectory and logs at level DEBUG. The operations marked "exit(1)"
// may end the process by System::exit.
class ServiceReplacement {
  public:
    // Both arguments must outlive this object.
    ServiceReplacement(System& usedSystem, vek::log::Logger& usedLogger)
        : system(usedSystem), logger(usedLogger) {}

    // Runs the whole procedure. Returns the exit code of the process: 0 if the service couldn't be
    // stopped and nothing was changed, 1 if the new executable didn't run and the old one was put
    // back. A good update calls exit(0), one that runs out of attempts exit(1). Throws
    // vek::PathInfo::Error.
    int run();

    enum Command { stop = 2, start = 3 };

    // Sends the service `name` the `command`, one of Command, and blocks without a limit until the
    // service has left the states that the command passes through. Returns 1 for success (a service
    // that isn't active counts as stopped), 0 for failure or any other command.
    int controlService(const char* name, int command);

    // Calls controlService("tolmar", start).
    int startService();

    // Deletes the executable kept from the update before and moves the installed one to its name.
    // Returns 1, or calls exit(1).
    int backupExecutable();

    // Copies the new executable to the installed one's name. Returns 1, or calls exit(1). Throws
    // vek::PathInfo::Error.
    int copyNewExecutable();

    // Moves the kept executable back, which fails while an installed one exists. Returns 1, or
    // calls exit(1).
    int restoreExecutable();

    // Returns 1 if the service "tolmar" is in the state SERVICE_RUNNING, else 0.
    int isServiceRunning();

  private:
    int stopAndWait(SC_HANDLE service);
    int startAndWait(SC_HANDLE service);
    template <class Attempt>
    void tryUntilDone(Attempt attempt);

    System& system;
    vek::log::Logger& logger;
};

}  // namespace tolmar
