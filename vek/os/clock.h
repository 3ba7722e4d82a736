// Flat functions over the process's running time and pauses. They throw nothing.
#pragma once

#include <cstdint>

namespace vek::os {

// Whole seconds since the first call of this function, or since the last of startSeconds. They are
// those of the calendar clock: they jump when it is set. The start is unguarded: threads that call
// the two for the first time at once may take different starts. Stands on time.
std::int64_t secondsSinceStart();

// Makes now the start from which secondsSinceStart counts.
void startSeconds();

// Pauses the calling thread for `milliseconds`, or for good (INFINITE). Stands on Sleep.
void sleepMilliseconds(std::uint32_t milliseconds);

}  // namespace vek::os
