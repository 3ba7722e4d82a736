// log_application::Following: finds processes and passes their lines on, filtered and merged by
// time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tools/log_application/finding/selection.h"
#include "tools/log_application/follow/followed_processes.h"
#include "tools/log_application/follow/follower.h"
#include "tools/log_application/follow/line_filter.h"
#include "tools/log_application/follow/line_queue.h"
#include "tools/log_application/follow/time_merger.h"
#include "tools/log_application/program/stop_signal.h"

namespace log_application {

struct FollowOptions {
    FilterOptions filter;
    std::optional<std::int64_t> timeoutMs;
    bool reconnect = false;
    // As in FollowerContext.
    const char* afterClosing = "--reconnect goes on";
    std::size_t bufferLines = 200'000;
};

// Where the lines go. All calls come from the thread that runs the Following.
class LineOutput {
  public:
    virtual ~LineOutput() = default;

    // Takes a line that passes the filter. `from` is its process.
    virtual void write(const LogLine& line, const Follower& from) = 0;

    // `count` lines of the process `label` were dropped, since the output was too slow.
    virtual void writeDropped(const std::string& label, std::uint64_t count) = 0;

    // A regular expression was given up on a line of the process `label`; the line is passed on.
    virtual void reportUndecided(const std::string& label) = 0;

    // Called after a number of lines, and before something is written to std::cerr.
    virtual void flush() = 0;

    // Called several times a second, lines or not.
    virtual void poll() {}

    // True if no more lines are wanted.
    virtual bool isDone() const { return false; }
};

// Not thread-safe. Starts a thread for each process.
class Following : public vek::NoCopy {
  public:
    // The time of `followOptions` begins now. Nothing is owned; everything must outlive this.
    Following(const Selection& wanted, const FollowOptions& followOptions, StopSignal& stopSignal);

    // Requests the stop and joins the threads.
    ~Following();

    // Finds the processes. With `reconnect` it awaits those that aren't there yet, each name and id
    // of the selection by itself; otherwise throws Failure if there is no process.
    void find();

    // True if several processes are followed.
    bool isSeveral() const { return followers.size() > 1; }

    // Passes lines to `output`, and writes notices about the processes to std::cerr. Blocks until
    // the stop, the end of the time, `output.isDone()`, or the end of all processes.
    void run(LineOutput& output);

    bool isTimeUp() const { return timeIsUp; }

    // True if all processes have ended. The stop ends their followers too.
    bool haveAllEnded() const { return ended == followers.size() && !stop.isRequested(); }

  private:
    // Adds a follower for each name and id that no process of `found` has.
    void awaitOthers(const Selection& wanted, const std::vector<Process>& found);
    void addFollower(const Selection& wanted, const std::optional<Process>& found);
    vek::time::MonotonicClock nextDeadline() const;
    bool isFinished(const LineOutput& output) const;
    void take(std::vector<Arrival> arrivals);
    void pass(const std::vector<MergedItem>& items, LineOutput& output);
    void pass(const MergedItem& item, LineOutput& output);
    void passLine(const MergedItem& item, LineOutput& output);

    const Selection& selection;
    const FollowOptions& options;
    StopSignal& stop;
    LineQueue queue;
    FollowedProcesses followed;
    const LineFilter filter;
    std::vector<std::unique_ptr<Follower>> followers;
    std::optional<TimeMerger> merger;
    std::optional<vek::time::MonotonicClock> end;
    // Sources whose incomplete messages were reported.
    std::set<std::size_t> reported;
    std::size_t ended = 0;
    bool timeIsUp = false;
};

}  // namespace log_application
