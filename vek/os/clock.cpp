#include "vek/os/clock.h"

#include <ctime>

#include "vek/base/windows.h"

namespace vek::os {

namespace {

// 0 ahead of the first call.
std::time_t startTime = 0;

}  // namespace

std::int64_t secondsSinceStart() {
    if (startTime == 0) {
        startSeconds();
    }
    return static_cast<std::int64_t>(std::difftime(std::time(nullptr), startTime));
}

void startSeconds() {
    startTime = std::time(nullptr);
}

void sleepMilliseconds(std::uint32_t milliseconds) {
    Sleep(milliseconds);
}

}  // namespace vek::os
