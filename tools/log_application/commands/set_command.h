// log_application::SetCommand: changes levels, and restores the earlier ones after --for.
#pragma once

#include <vector>

#include "tools/log_application/commands/options.h"
#include "tools/log_application/connection/earlier_levels.h"
#include "tools/log_application/program/exit_code.h"
#include "tools/log_application/program/stop_signal.h"

namespace log_application {

// Not thread-safe.
class SetCommand : public vek::NoCopy {
  public:
    // Neither is owned; both must outlive this.
    SetCommand(const Options& commandOptions, StopSignal& stopSignal)
        : options(commandOptions), stop(stopSignal) {}

    // Changes the levels of each process. With --for, blocks until the time is over or the stop is
    // requested and then restores the earlier levels, also in a process where only some could be
    // changed. A failure of one process is reported and doesn't affect the others. Returns the
    // worst exit code. Throws Failure if there is no process.
    ExitCode run();

  private:
    void change(const Process& process);
    void waitForEnd() const;
    ExitCode putBack() const;

    const Options& options;
    StopSignal& stop;
    std::vector<EarlierLevels> earlier;
};

}  // namespace log_application
