// Flat functions for the process's running time and for pauses. They throw nothing.
#pragma once

#include <cstdint>

namespace vek::os {

// Returns the whole seconds since the first call of this function, or since the last call of
// startSeconds. It uses the calendar clock, so the count jumps when that is set. Seconds have 64
// bits. The start is unguarded: threads that make the first call at the same time may see different
// starts. Calls _time64, the 64-bit form of time.
std::int64_t secondsSinceStart();

// Makes now the start from which secondsSinceStart counts.
void startSeconds();

// Blocks the calling thread for `milliseconds`, or forever (INFINITE). Calls Sleep.
void sleepMilliseconds(std::uint32_t milliseconds);

}  // namespace vek::os
