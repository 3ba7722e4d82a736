// Where the clocks take their time from: the system's sources, and the process-wide state that
// tells which of them there are. All times are milliseconds in signed 64 bits.
//
// The state is written by initClocks and initClockOrigin, before other threads exist, and only read
// later; everything else here is safe from any thread.
//
// Before initClocks the state is all zero, so that the monotonic source is GetTickCount, and the
// time since start-up is the same. Stamps from before and after initClocks don't belong together:
// the sources have different origins.
#pragma once

#include <cstdint>

#include "vek/base/windows.h"

namespace vek::time {

struct ClockState {
    // QueryPerformanceFrequency succeeded.
    bool performanceCounterAvailable = false;
    // The counter's frequency divided by 1000.
    std::uint64_t ticksPerMillisecond = 0;
    // Null if the system lacks it.
    decltype(&::GetTickCount64) getTickCount64 = nullptr;
    // The monotonic time at start-up.
    std::int64_t clockOrigin = 0;
};

// Finds out which monotonic sources there are. Throws nothing: a system without the performance
// counter is asked for its ticks. Stands on QueryPerformanceFrequency and the look-up of
// GetTickCount64.
void initClocks();

// Makes this moment the one that the time since start-up counts from. To be called behind
// initClocks. Throws as monotonicMilliseconds does.
void initClockOrigin();

const ClockState& clockState();

// Milliseconds since 1970-01-01 00:00 UTC. Throws nothing. Stands on GetSystemTimeAsFileTime.
std::int64_t realtimeMilliseconds();

// The monotonic source, from an arbitrary start: performanceMilliseconds if there is a counter,
// otherwise tickMilliseconds. Throws as they do.
std::int64_t monotonicMilliseconds();

// The performance counter, in milliseconds. Throws OsError if the counter can't be read.
//
// Deliberately unguarded: with ticksPerMillisecond at 0, as before initClocks or with a counter of
// less than 1000 Hz, this divides by zero, which ends the process. Stands on
// QueryPerformanceCounter.
std::int64_t performanceMilliseconds();

// Milliseconds since the system was started. Throws nothing. Stands on GetTickCount64 where the
// system has it (known after initClocks), otherwise on GetTickCount, which starts anew after 49.7
// days; nothing corrects for that.
std::int64_t tickMilliseconds();

// A file time as milliseconds since 1970-01-01 00:00 UTC, cut to whole ones. Throws nothing.
std::int64_t fileTimeToUnix(const FILETIME& fileTime);

// The reverse. A file time begins in 1601 and ends in 60055; a value outside of that wraps.
FILETIME unixToFileTime(std::int64_t milliseconds);

}  // namespace vek::time
