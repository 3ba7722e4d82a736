// log_application::TimedLevels: changes levels of processes, and puts the earlier ones back when
// their time is over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/log_application/connection/earlier_levels.h"
#include "tools/log_application/program/stop_signal.h"
#include "vek/base/no_copy.h"
#include "vek/thread/condition.h"
#include "vek/thread/runnable.h"
#include "vek/thread/thread.h"

namespace log_application {

// Thread-safe. Changes are made one after the other.
class TimedLevels : public vek::thread::Runnable, public vek::NoCopy {
  public:
    // A logger by its name in UTF-8; none for the default level.
    using Logger = std::optional<std::string>;

    // Called after levels were put back, with the number of the process and, if that failed, the
    // reason. On the thread of this, or on that of the caller of `putBack`.
    using Report = std::function<void(std::size_t, const std::string&)>;

    // Starts the thread. `stopSignal` isn't owned and must outlive this.
    TimedLevels(StopSignal& stopSignal, Report levelReport);

    // Puts all earlier levels back, as their time is over now. Failures are written to std::cerr.
    // The stop must have been requested.
    ~TimedLevels() override;

    // Changes a level of `process`, which has the number `id`; DEFAULT lets a logger follow the
    // default level. With `forMs` the level from before the first of several such changes is put
    // back after this time; without it, the change is for good. Blocks for the answers. Throws
    // Failure: exitNotDone if there is no such logger or the process refuses.
    void set(std::size_t id, const Process& process, const Logger& logger, vek::log::Level level,
             std::optional<std::int64_t> forMs);

    // Puts the earlier level back now. Does nothing if there is none.
    void putBack(std::size_t id, const Logger& logger);

    struct Timed {
        Logger logger;
        std::int64_t leftMs;
    };

    // The levels of a process that are going to be put back.
    std::vector<Timed> of(std::size_t id) const;

    // Waits for the ends of the times. Called on the thread.
    void run() override;

  private:
    using Key = std::pair<std::size_t, Logger>;
    struct Change {
        EarlierLevels earlier;
        std::int64_t end;  // on the monotonic clock
    };

    void putBackDue(std::int64_t now);
    void putBack(const Key& key);
    std::optional<Change> take(const Key& key);

    StopSignal& stop;
    const Report report;
    std::mutex operations;  // held during each change
    mutable vek::thread::Condition changed;
    std::map<Key, Change> changes;  // guarded by `changed`
    vek::thread::Thread thread;
};

}  // namespace log_application
