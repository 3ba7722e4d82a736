// The time sources of the clocks, and the process-wide state that says which of them exist. All
// times are milliseconds in signed 64 bits.
//
// initClocks and initClockOrigin write the state before other threads exist; later it is only read.
// Everything else here is thread-safe.
//
// Before initClocks the state is all zero: the monotonic source is GetTickCount, and the time since
// start-up is the same. Don't compare time stamps from before and after initClocks: the sources
// have different origins.
#pragma once

#include <cstdint>

#include "vek/base/windows.h"

namespace vek::time {

// What initClocks and initClockOrigin have found out.
struct ClockState {
    // QueryPerformanceFrequency succeeded.
    bool performanceCounterAvailable = false;
    // The counter's frequency divided by 1000.
    std::uint64_t ticksPerMillisecond = 0;
    // Null if the system doesn't have it.
    decltype(&::GetTickCount64) getTickCount64 = nullptr;
    // The monotonic time at start-up.
    std::int64_t clockOrigin = 0;
};

// Finds out which monotonic sources exist. Throws nothing: without a performance counter the tick
// count is used. Calls QueryPerformanceFrequency and looks up GetTickCount64.
void initClocks();

// Makes now the origin of the time since start-up. Call it after initClocks. Throws as
// monotonicMilliseconds does.
void initClockOrigin();

const ClockState& clockState();  // set by the two above only

// Returns the milliseconds since 1970-01-01 00:00 UTC. Throws nothing. Calls
// GetSystemTimeAsFileTime.
std::int64_t realtimeMilliseconds();

// Returns the monotonic time, from an arbitrary origin: performanceMilliseconds if there is a
// counter, otherwise tickMilliseconds. Throws as they do.
std::int64_t monotonicMilliseconds();

// Returns the performance counter in milliseconds. Calls QueryPerformanceCounter. Throws OsError if
// that fails.
//
// Deliberately unguarded: if ticksPerMillisecond is 0, as before initClocks or with a counter of
// less than 1000 Hz, this divides by zero, which ends the process.
std::int64_t performanceMilliseconds();

// Returns the milliseconds since the system was started. Throws nothing. Calls GetTickCount64 if
// the system has it (known after initClocks), otherwise GetTickCount, which wraps to 0 after 49.7
// days; nothing corrects for that.
std::int64_t tickMilliseconds();

// Converts a file time to milliseconds since 1970-01-01 00:00 UTC, truncated. Throws nothing.
std::int64_t fileTimeToUnix(const FILETIME& fileTime);

// The reverse. File times range from 1601 to 60055; a value outside of that wraps. Throws nothing.
FILETIME unixToFileTime(std::int64_t milliseconds);

}  // namespace vek::time
