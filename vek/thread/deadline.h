// Time-outs for system calls, from deadlines.
#pragma once

#include <cstdint>

#include "vek/time/clock.h"

namespace vek::thread {

// Returns the milliseconds from now to `deadline`; 0 if that has passed. Deliberately truncated to
// 32 bits: a deadline more than 49 days ahead comes too early, or never if the truncated value is
// INFINITE. Throws OsError if the clock can't be read.
std::uint32_t millisecondsUntil(const time::MonotonicClock& deadline);

}  // namespace vek::thread
