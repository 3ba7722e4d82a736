// log_application::TailCommand: shows the messages of one or several processes live.
#pragma once

#include <optional>
#include <string>

#include "tools/log_application/commands/options.h"
#include "tools/log_application/follow/following.h"
#include "tools/log_application/program/exit_code.h"
#include "tools/log_application/program/stop_signal.h"
#include "tools/log_application/show/line_renderer.h"

namespace log_application {

// Not thread-safe. Starts a thread for each process.
class TailCommand : public vek::NoCopy, private LineOutput {
  public:
    // Neither is owned; both must outlive this.
    TailCommand(const Options& commandOptions, StopSignal& stopSignal);

    // Blocks until the stop, the end of --timeout, the message of --expect, or the end of all
    // processes. Returns exitDone; exitNotDone if the message of --expect didn't come; exitLost if
    // all processes have ended. Throws Failure if there is no process or the output fails.
    ExitCode run();

  private:
    void write(const LogLine& line, const Follower& from) override;
    void writeDropped(const std::string& label, std::uint64_t count) override;
    void reportUndecided(const std::string& label) override;
    void flush() override;
    bool isDone() const override { return isMet; }
    ExitCode result() const;

    const Options& options;
    std::optional<LineRenderer> renderer;
    bool undecidedReported = false;
    bool isMet = false;
    // Destroyed first: its threads end then.
    Following following;
};

}  // namespace log_application
