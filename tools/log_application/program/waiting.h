// What threads of this program that wait have in common.
#pragma once

#include <cstdint>

#include "vek/time/clock.h"

namespace log_application {

// How often a waiting thread checks whether it has to stop, in milliseconds.
inline constexpr std::int64_t stopPollMs = 200;

// Returns the time of the system's monotonic clock, in milliseconds. Only differences mean
// something. Thread-safe. Throws vek::OsError if the clock can't be read.
inline std::int64_t monotonicMs() {
    return vek::time::MonotonicClock(true).getValue();
}

}  // namespace log_application
