#include "vek/time/clock_source.h"

#include "vek/base/optional_function.h"
#include "vek/base/shared_lib.h"
#include "vek/exception.h"
#include "vek/os/calendar.h"

namespace vek::time {

namespace {

constexpr std::int64_t fileTimeToUnixMs = os::secondsFrom1601To1970 * 1000;
constexpr std::uint64_t fileTimeUnitsPerMs = os::fileTimeTicksPerSecond / 1000;

ClockState state;

}  // namespace

void initClocks() {
    LARGE_INTEGER frequency = {};
    state.performanceCounterAvailable = QueryPerformanceFrequency(&frequency) != 0;
    if (!state.performanceCounterAvailable) {
        state.ticksPerMillisecond = 0;
        return;
    }
    state.ticksPerMillisecond = static_cast<std::uint64_t>(frequency.QuadPart) / 1000;
    try {
        state.getTickCount64 =
            resolveFunction<decltype(&::GetTickCount64)>(kernel32Library(), "GetTickCount64");
    } catch (const Exception&) {
        state.getTickCount64 = nullptr;
    }
}

void initClockOrigin() {
    state.clockOrigin = 0;
    state.clockOrigin = monotonicMilliseconds();
}

const ClockState& clockState() {
    return state;
}

std::int64_t realtimeMilliseconds() {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return fileTimeToUnix(now);
}

std::int64_t monotonicMilliseconds() {
    return state.performanceCounterAvailable ? performanceMilliseconds() : tickMilliseconds();
}

std::int64_t performanceMilliseconds() {
    LARGE_INTEGER ticks;
    if (QueryPerformanceCounter(&ticks) == 0) {
        throw OsError(GetLastError());
    }
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(ticks.QuadPart) /
                                     state.ticksPerMillisecond);
}

std::int64_t tickMilliseconds() {
    if (state.getTickCount64 != nullptr) {
        return static_cast<std::int64_t>(state.getTickCount64());
    }
    return std::int64_t{GetTickCount()};
}

std::int64_t fileTimeToUnix(const FILETIME& fileTime) {
    const ULARGE_INTEGER units = {
        {.LowPart = fileTime.dwLowDateTime, .HighPart = fileTime.dwHighDateTime}};
    return static_cast<std::int64_t>(units.QuadPart / fileTimeUnitsPerMs) - fileTimeToUnixMs;
}

FILETIME unixToFileTime(std::int64_t milliseconds) {
    ULARGE_INTEGER units;
    units.QuadPart =
        (static_cast<std::uint64_t>(milliseconds) + static_cast<std::uint64_t>(fileTimeToUnixMs)) *
        fileTimeUnitsPerMs;
    return {.dwLowDateTime = units.LowPart, .dwHighDateTime = units.HighPart};
}

}  // namespace vek::time
