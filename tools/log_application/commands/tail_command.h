// log_application::TailCommand: shows the messages of one or several processes live.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "tools/log_application/commands/options.h"
#include "tools/log_application/follow/followed_processes.h"
#include "tools/log_application/follow/follower.h"
#include "tools/log_application/follow/line_filter.h"
#include "tools/log_application/follow/line_queue.h"
#include "tools/log_application/follow/time_merger.h"
#include "tools/log_application/program/exit_code.h"
#include "tools/log_application/program/stop_signal.h"
#include "tools/log_application/show/line_renderer.h"

namespace log_application {

// Not thread-safe. Starts a thread for each process.
class TailCommand : public vek::NoCopy {
  public:
    // Neither is owned; both must outlive this.
    TailCommand(const Options& commandOptions, StopSignal& stopSignal);

    // Requests the stop and joins the threads.
    ~TailCommand();

    // Blocks until the stop, the end of --timeout, the message of --expect, or the end of all
    // processes. Returns exitDone; exitNotDone if the message of --expect didn't come; exitLost if
    // all processes have ended. Throws Failure if there is no process or the output fails.
    ExitCode run();

  private:
    void findTargets();
    void addFollower(const Selection& wanted, const std::optional<Process>& found);
    void loop();
    vek::time::MonotonicClock nextDeadline() const;
    void take(std::vector<Arrival> arrivals);
    void show(const std::vector<MergedItem>& items);
    void show(const MergedItem& item);
    void showLine(const MergedItem& item);
    void reportUndecided(const std::string& label);
    bool isFinished() const;
    ExitCode result() const;

    const Options& options;
    StopSignal& stop;
    LineQueue queue;
    FollowedProcesses followed;
    const LineFilter filter;
    std::vector<std::unique_ptr<Follower>> followers;
    std::optional<LineRenderer> renderer;
    std::optional<TimeMerger> merger;
    std::optional<vek::time::MonotonicClock> end;
    // Sources whose incomplete messages were reported.
    std::set<std::size_t> reported;
    bool undecidedReported = false;
    std::size_t ended = 0;
    bool timeIsUp = false;
    bool isMet = false;
};

}  // namespace log_application
