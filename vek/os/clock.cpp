#include "vek/os/clock.h"

#include <time.h>

#include "vek/base/windows.h"

namespace vek::os {

namespace {

// 0 before the first call. 64 bits: a time_t of 32 bits ends in 2038.
__time64_t startTime = 0;

}  // namespace

std::int64_t secondsSinceStart() {
    if (startTime == 0) {
        startSeconds();
    }
    return static_cast<std::int64_t>(_difftime64(_time64(nullptr), startTime));
}

void startSeconds() {
    startTime = _time64(nullptr);
}

void sleepMilliseconds(std::uint32_t milliseconds) {
    Sleep(milliseconds);
}

}  // namespace vek::os
