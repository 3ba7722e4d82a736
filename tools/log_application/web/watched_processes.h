// log_application::WatchedProcesses: the processes of the page, with their levels; each is
// followed.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tools/log_application/finding/selection.h"
#include "tools/log_application/follow/followed_processes.h"
#include "tools/log_application/follow/follower.h"
#include "tools/log_application/follow/line_queue.h"
#include "tools/log_application/program/stop_signal.h"
#include "tools/log_application/web/timed_levels.h"

namespace log_application {

// Searches for processes again and again on a thread of its own. A process that has been found gets
// a number, which is the source of its messages in the queue; one that returns gets a new one.
// Thread-safe.
class WatchedProcesses : public vek::thread::Runnable, public vek::NoCopy {
  public:
    // The time between two searches, in milliseconds.
    static constexpr std::int64_t searchEveryMs = 2000;

    // Ended processes that are still listed.
    static constexpr std::size_t mostEnded = 20;

    // Starts the thread. Nothing is owned; all must outlive this.
    WatchedProcesses(const Selection& selection, StopSignal& stopSignal, LineQueue& lineQueue);

    // Blocks until all threads have ended, and puts back levels that were set for a time. The stop
    // must have been requested.
    ~WatchedProcesses() override;

    // To be called when the follower of the source `id` has ended.
    void noteEnd(std::size_t id);

    // Changes a level as TimedLevels::set does. Throws Failure: exitNotDone if the process has
    // ended.
    void setLevel(std::size_t id, const TimedLevels::Logger& logger, vek::log::Level level,
                  std::optional<std::int64_t> forMs);

    // Puts a level back before its time.
    void putBack(std::size_t id, const TimedLevels::Logger& logger);

    // Changes with each change of what `json` returns but the times left.
    std::uint64_t version() const { return changeCount; }

    // {"searched":true,"problem":null,"processes":[{"id":1,"name":"demo","pid":4242,
    // "address":"127.0.0.1:49731","state":"live","reason":null,"default":"INFO",
    // "loggers":[["net","DEBUG"],["ui","default"]],"timed":[["net",599000],[null,1000]]}]}. The
    // state is "live", "silent" (no connection; `reason` says why) or "ended".
    std::string json() const;

    // The name by which the page hides a process: that of "name" in `json`. Empty for an unknown
    // id.
    std::string nameOf(std::size_t id) const;

    // Searches. Called on the thread.
    void run() override;

  private:
    enum class State { live, silent, ended };
    struct Watched {
        Process process;
        State state = State::silent;
        std::string reason;
        std::string defaultLevel;
        std::map<std::string, std::string> loggers;
        std::unique_ptr<Follower> follower;
    };

    void search();
    std::vector<Process> found(std::string& failure) const;
    void update(const Process& process);
    void readLevels(std::size_t id);
    void follow(std::size_t id);
    void forgetGone(const std::vector<Process>& present);
    void removeEnded(const std::string& name);
    std::optional<Process> liveProcess(std::size_t id) const;
    void noteLevels(std::size_t id, const std::string& failure);
    std::string jsonOf(std::size_t id, const Watched& watched) const;

    const Selection& wanted;
    StopSignal& stop;
    LineQueue& queue;
    FollowedProcesses followed;
    std::atomic<std::uint64_t> changeCount = 1;
    mutable std::mutex lock;
    std::map<std::size_t, Watched>
        processes;  // guarded by `lock`; the thread alone adds and removes
    std::map<std::size_t, std::string> names;  // guarded by `lock`; also of removed ones
    std::string problem;                       // guarded by `lock`
    bool searched = false;                     // guarded by `lock`
    std::size_t nextId = 1;
    std::unique_ptr<TimedLevels> levels;
    vek::thread::Thread thread;
};

}  // namespace log_application
