// log_application::LineStore: the latest lines, for any number of readers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

#include "tools/log_application/follow/time_merger.h"
#include "vek/base/no_copy.h"
#include "vek/thread/condition.h"
#include "vek/time/clock.h"

namespace log_application {

// Thread-safe. Adding never waits for a reader: the oldest lines are removed when there is no room,
// and a reader that hadn't taken them is told how many it has missed.
class LineStore : public vek::NoCopy {
  public:
    // The limit of all texts together, in bytes.
    static constexpr std::size_t mostBytes = std::size_t{128} << 20;

    // Keeps at most `lines` items, whose texts take `longestTexts` bytes at most.
    explicit LineStore(std::size_t lines, std::size_t longestTexts = mostBytes)
        : capacity(lines), byteLimit(longestTexts) {}

    using Item = std::shared_ptr<const MergedItem>;

    // Numbers the items and adds them. The first one of all has the number 0.
    void add(std::vector<MergedItem> items);

    struct Taken {
        std::vector<Item> items;
        std::uint64_t first = 0;   // the number of the first item
        std::uint64_t missed = 0;  // items before it that were removed
    };

    // Returns up to `most` items from the number `from` on. Blocks until there is one or `deadline`
    // has passed.
    Taken take(std::uint64_t from, std::size_t most, const vek::time::MonotonicClock& deadline);

    // The number that the next item will get.
    std::uint64_t end() const;

  private:
    static std::size_t sizeOf(const MergedItem& item);

    const std::size_t capacity;
    const std::size_t byteLimit;
    mutable vek::thread::Condition condition;
    std::deque<Item> kept;
    std::uint64_t firstNumber = 0;
    std::size_t bytes = 0;
};

}  // namespace log_application
