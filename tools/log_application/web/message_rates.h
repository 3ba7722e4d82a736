// log_application::MessageRates: how many messages of each level came in each second.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "vek/base/no_copy.h"
#include "vek/log/level.h"

namespace log_application {

// Thread-safe. Remembers the last ten minutes.
class MessageRates : public vek::NoCopy {
  public:
    static constexpr std::size_t secondsKept = 600;

    // By level from ERR to TRACE; the first is that of messages without a level.
    using Second = std::array<std::uint32_t, 6>;

    // Counts a message that came in the second `second` of a monotonic clock. Seconds must not
    // decrease.
    void count(std::int64_t second, std::optional<vek::log::Level> level);

    // Returns the seconds from `first` to `last`, both included. A second that isn't remembered is
    // returned as zeros.
    std::vector<Second> between(std::int64_t first, std::int64_t last) const;

  private:
    struct Slot {
        std::int64_t second = -1;
        Second counts = {};
    };

    mutable std::mutex lock;
    // Each second has one place, at its number modulo the size.
    std::array<Slot, secondsKept> slots;
};

}  // namespace log_application
