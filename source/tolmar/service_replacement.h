// tolmar::ServiceReplacement: stops the service, swaps its executable, starts it, watches it, and
// tries to go back if it doesn't run.
//
// The waits, the numbers of attempts and the results that nobody looks at are the contract of this
// procedure. README.md tells every state that it can end in.
#pragma once

#include "source/tolmar/system.h"
#include "vek/log/logger.h"

namespace tolmar {

// For one thread. Reads helperDirectory. Every operation may end the process by System::exit where
// that is said, and logs at level DEBUG.
class ServiceReplacement {
  public:
    // Both arguments must outlive this object.
    ServiceReplacement(System& usedSystem, vek::log::Logger& usedLogger)
        : system(usedSystem), logger(usedLogger) {}

    // The whole procedure. The result is the exit code of the process: 0 if the service could not
    // be stopped, with nothing changed, and 1 if the new executable didn't run and the way back was
    // gone. A good update ends by exit(0) in here. Throws vek::PathInfo::Error.
    int run();

    enum Command { stop = 2, start = 3 };

    // Sends the service `name` the `command` and waits without bound until its state settles. The
    // result is 1 for success (a service that isn't active counts as stopped) and 0 for failure.
    // Another command gives 0.
    int controlService(const char* name, int command);

    // Starts the service "tolmar".
    int startService();

    // Moves the installed executable aside, deleting the one kept from the update before. 1, or
    // exit(1).
    int backupExecutable();

    // Copies the new executable to where the installed one stood. 1, or exit(1). Throws
    // vek::PathInfo::Error.
    int copyNewExecutable();

    // Moves the kept executable back, which fails while an installed one stands. 1, or exit(1).
    int restoreExecutable();

    // 1 if the service "tolmar" runs at this moment.
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
