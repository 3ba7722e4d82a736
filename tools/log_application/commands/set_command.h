// log_application::SetCommand: changes levels, and puts the earlier ones back where that was asked.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/log_application/commands/options.h"
#include "tools/log_application/connection/client.h"
#include "tools/log_application/program/exit_code.h"
#include "tools/log_application/program/stop_signal.h"

namespace log_application {

// For one thread.
class SetCommand : public vek::NoCopy {
  public:
    // Both are borrowed.
    SetCommand(const Options& commandOptions, StopSignal& stopSignal)
        : options(commandOptions), stop(stopSignal) {}

    // Changes the levels of each process. With a time for them to last, waits for its end or the
    // stop, and puts the earlier ones back, also in a process where only some could be changed.
    // What goes wrong with one process is reported and doesn't touch the others; the result is the
    // worst exit code. Throws Failure if there is no process.
    ExitCode run();

  private:
    // What to tell a process for it to be as before.
    struct Earlier {
        Process process;
        std::optional<vek::log::Level> defaultLevel;
        std::vector<LevelChange> loggers;
    };

    void change(const Process& process);
    void remember(Client& client, const Process& process,
                  const std::map<std::string, std::string>& loggers);
    void waitForEnd() const;
    ExitCode putBack() const;

    const Options& options;
    StopSignal& stop;
    std::vector<Earlier> earlier;
};

}  // namespace log_application
