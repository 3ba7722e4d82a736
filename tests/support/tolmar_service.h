// support::TolmarService: the service "tolmar" in the service database of this machine, or of this
// Wine prefix. Each call opens the service anew: an open handle would delay its removal.
#pragma once

#include <string>

#include "vek/base/windows.h"

namespace support {

class TolmarService {
  public:
    // Registers the service with `executable`, not started. Throws vek::OsError.
    static void install(const std::string& executable);

    // Starts it. Doesn't wait until it runs. Throws vek::OsError.
    static void start();

    // Asks it to stop. Doesn't wait. Returns 0 or the error of ControlService.
    static DWORD askToStop();

    // Returns its state, one of SERVICE_STOPPED to SERVICE_PAUSED, or 0 if there is no such
    // service.
    static DWORD state();

    // Blocks for up to `limitMs` milliseconds. Returns whether the state `wanted` was seen.
    static bool waitForState(DWORD wanted, unsigned limitMs);

    // Returns a handle of its process with the rights `access`, owned by the caller; null if it has
    // no process.
    static HANDLE openProcess(DWORD access = SYNCHRONIZE);

    // Ends its process, if it has one, and blocks until it has gone.
    static void endProcess();

    // Deletes it, once it is stopped, and blocks for up to `limitMs` milliseconds until it has
    // gone. Returns whether it has.
    static bool remove(unsigned limitMs);
};

}  // namespace support
