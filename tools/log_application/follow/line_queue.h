// log_application::LineQueue: what the readers of several processes hand to the one who writes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tools/log_application/follow/arrival.h"
#include "vek/base/no_copy.h"
#include "vek/thread/condition.h"
#include "vek/time/clock.h"

namespace log_application {

// A reader never waits here: a message that finds no room is dropped and counted, so that the
// process that is read isn't held up by a slow output. Any thread may add; one takes.
class LineQueue : public vek::NoCopy {
  public:
    // The most that is kept of the messages' telegrams, in bytes.
    static constexpr std::size_t mostBytes = 128 << 20;

    // Keeps `mostMessages` messages at most.
    explicit LineQueue(std::size_t mostMessages) : capacity(mostMessages) {}

    void addMessage(std::size_t source, std::string telegram);

    // These always find room.
    void addNotice(std::size_t source, std::string text);
    void addEnd(std::size_t source);

    // Waits until there is something, or `deadline`, and gives all there is, in its order; what was
    // dropped stands where it would have been.
    std::vector<Arrival> take(const vek::time::MonotonicClock& deadline);

  private:
    void add(Arrival arrival);

    const std::size_t capacity;
    vek::thread::Condition condition;
    std::vector<Arrival> arrivals;
    std::size_t messages = 0;
    std::size_t bytes = 0;
    std::map<std::size_t, std::uint64_t> drops;
};

}  // namespace log_application
