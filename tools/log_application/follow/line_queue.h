// log_application::LineQueue: the queue from the followers to the command that shows lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tools/log_application/follow/arrival.h"
#include "vek/base/compiler.h"
#include "vek/base/no_copy.h"
#include "vek/thread/condition.h"
#include "vek/time/clock.h"

namespace log_application {

// Adding never blocks: a message that finds the queue full is dropped and counted, so that a slow
// output never stalls the process that is followed. Any thread may add, one thread may take.
class LineQueue : public vek::NoCopy {
  public:
    // The limit of the queued telegrams, in bytes.
    static constexpr std::size_t mostBytes = 128 << 20;

    // Queues at most `mostMessages` messages.
    explicit LineQueue(std::size_t mostMessages) : capacity(mostMessages) {}

    void addMessage(std::size_t source, std::string telegram);

    // These are never dropped.
    void addNotice(std::size_t source, std::string text);
    void addEnd(std::size_t source);

    // Blocks until the queue isn't empty or `deadline` has passed. Returns and removes everything
    // in order; a `dropped` arrival takes the place of what was dropped.
    std::vector<Arrival> take(const vek::time::MonotonicClock& deadline);

  private:
    void add(Arrival arrival) VEK_REQUIRES(condition);

    const std::size_t capacity;
    vek::thread::Condition condition;
    std::vector<Arrival> arrivals VEK_GUARDED_BY(condition);
    std::size_t messages VEK_GUARDED_BY(condition) = 0;
    std::size_t bytes VEK_GUARDED_BY(condition) = 0;
    std::map<std::size_t, std::uint64_t> drops VEK_GUARDED_BY(condition);
};

}  // namespace log_application
