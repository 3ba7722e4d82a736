// log_application::TimeMerger: puts the lines of several processes into the order of their times.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "tools/log_application/follow/arrival.h"
#include "tools/log_application/show/log_line.h"

namespace log_application {

// An arrival, with its line if it is a message.
struct MergedItem {
    Arrival arrival;
    std::optional<LogLine> line;
};

// Each item is kept for a while after its arrival, so that one of an earlier time that comes by
// another connection a little later still gets in front. Items of one source never overtake one
// another. For one thread.
class TimeMerger {
  public:
    // `windowMs` is how long an item is kept, in milliseconds; 0 gives each back at once, in the
    // order of their arrival.
    explicit TimeMerger(std::int64_t windowMs) : window(windowMs) {}

    // `nowMs` is the present time of any clock that doesn't go back.
    void add(MergedItem item, std::int64_t nowMs);

    // Gives the items that have been kept for long enough, and those of earlier times.
    std::vector<MergedItem> takeReady(std::int64_t nowMs);

    std::vector<MergedItem> takeAll();

    // When to ask for what is ready, on the clock of `nowMs`; none without items.
    std::optional<std::int64_t> nextReady() const;

  private:
    const std::int64_t window;
    // By time; items of one time in the order of their arrival.
    std::multimap<std::int64_t, MergedItem> kept;
    // The latest time of each source, which its later items don't go behind.
    std::map<std::size_t, std::int64_t> latest;
    // When each came, and its time, in the order of arrival. What was given back early stays here
    // until it is due.
    std::deque<std::pair<std::int64_t, std::int64_t>> arrivals;
};

}  // namespace log_application
