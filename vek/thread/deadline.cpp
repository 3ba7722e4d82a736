#include "vek/thread/deadline.h"

namespace vek::thread {

std::uint32_t millisecondsUntil(const time::MonotonicClock& deadline) {
    const std::int64_t left = deadline - time::MonotonicClock(true);
    return left < 0 ? 0 : static_cast<std::uint32_t>(left);
}

}  // namespace vek::thread
