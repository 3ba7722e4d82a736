#include "tools/log_application/web/message_rates.h"

namespace log_application {

void MessageRates::count(std::int64_t second, std::optional<vek::log::Level> level) {
    const std::lock_guard guard(lock);
    Slot& slot = slots[static_cast<std::size_t>(second) % secondsKept];
    if (slot.second != second) {
        slot = {second, {}};
    }
    const bool isKnown = level && *level >= vek::log::ERR && *level <= vek::log::TRACE;
    ++slot.counts[isKnown ? static_cast<std::size_t>(*level) : 0];
}

std::vector<MessageRates::Second> MessageRates::between(std::int64_t first,
                                                        std::int64_t last) const {
    std::vector<Second> result;
    const std::lock_guard guard(lock);
    for (std::int64_t second = first; second <= last; ++second) {
        const Slot& slot = slots[static_cast<std::size_t>(second) % secondsKept];
        result.push_back(slot.second == second ? slot.counts : Second());
    }
    return result;
}

}  // namespace log_application
