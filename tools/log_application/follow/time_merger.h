// log_application::TimeMerger: merges the lines of several processes by time.
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

// Parses the telegram of a message. Without a line the telegram is none, or isn't a message.
MergedItem itemOf(Arrival arrival);

// Holds each item back for a while, so that an earlier one that arrives a little later on another
// connection still comes first. Items of one source keep their order. Not thread-safe.
class TimeMerger {
  public:
    // Long enough for processes of one host.
    static constexpr std::int64_t usualWindowMs = 250;

    // `windowMs` is how long an item is held back, in milliseconds. With 0 items are returned at
    // once in order of arrival.
    explicit TimeMerger(std::int64_t windowMs) : window(windowMs) {}

    // `nowMs` is the current time of a monotonic clock.
    void add(MergedItem item, std::int64_t nowMs);

    // Returns and removes the items that were held back for long enough, and all that are earlier
    // than these.
    std::vector<MergedItem> takeReady(std::int64_t nowMs);

    // Returns and removes all items.
    std::vector<MergedItem> takeAll();

    // Returns when the next item is ready, on the clock of `nowMs`; none without items.
    std::optional<std::int64_t> nextReady() const;

  private:
    const std::int64_t window;
    // By time; items with the same time in order of arrival.
    std::multimap<std::int64_t, MergedItem> kept;
    // The latest time of each source; its later items are sorted in no earlier.
    std::map<std::size_t, std::int64_t> latest;
    // Time of arrival and time of the item, in order of arrival. Items that were returned early
    // stay here until they are due.
    std::deque<std::pair<std::int64_t, std::int64_t>> arrivals;
};

}  // namespace log_application
