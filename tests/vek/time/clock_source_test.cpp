#include "vek/time/clock_source.h"

#include <cstdlib>
#include <limits>

#include <gtest/gtest.h>

#include "vek/time/clock.h"

namespace {

using namespace vek::time;

constexpr DWORD divisionByZero = 0xC0000094;

// A source is read between two reads of the other, so that nothing is assumed about the time that
// the reads take.
template <class Read, class Reference>
bool isBetween(Read read, Reference reference) {
    const std::int64_t before = reference();
    const std::int64_t value = read();
    return before <= value && value <= reference();
}

std::int64_t counterMilliseconds() {
    LARGE_INTEGER frequency;
    LARGE_INTEGER ticks;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&ticks);
    return ticks.QuadPart / (frequency.QuadPart / 1000);
}

std::int64_t shortTicks() {
    return std::int64_t{GetTickCount()};
}

std::int64_t longTicks() {
    return static_cast<std::int64_t>(GetTickCount64());
}

TEST(InitClocks, FindsTheCounterAndTheLongTicks) {
    initClocks();
    LARGE_INTEGER frequency;
    ASSERT_NE(QueryPerformanceFrequency(&frequency), 0);
    EXPECT_TRUE(clockState().performanceCounterAvailable);
    EXPECT_EQ(clockState().ticksPerMillisecond,
              static_cast<std::uint64_t>(frequency.QuadPart / 1000));
    ASSERT_NE(clockState().getTickCount64, nullptr);
    EXPECT_TRUE(isBetween([] { return static_cast<std::int64_t>(clockState().getTickCount64()); },
                          longTicks));
}

TEST(InitClocks, MonotonicSourceIsTheCounterAfterwards) {
    initClocks();
    EXPECT_TRUE(isBetween(monotonicMilliseconds, counterMilliseconds));
    EXPECT_TRUE(isBetween(performanceMilliseconds, counterMilliseconds));
    EXPECT_TRUE(isBetween(tickMilliseconds, longTicks));
}

TEST(InitClockOrigin, MakesThisMomentTheOrigin) {
    initClocks();
    EXPECT_TRUE(isBetween(
        [] {
            initClockOrigin();
            return clockState().clockOrigin;
        },
        counterMilliseconds));
}

TEST(InitClockOrigin, CanBeSetAnew) {
    initClocks();
    initClockOrigin();
    const std::int64_t first = clockState().clockOrigin;
    while (monotonicMilliseconds() == first) {
    }
    initClockOrigin();
    // Not the time since the former origin.
    EXPECT_GT(clockState().clockOrigin, first);
}

// Runs in a process of its own, where nothing has started the clocks: its exit code is the number
// of the check that failed.
[[noreturn]] void checkClocksBeforeStart() {
    const ClockState& state = clockState();
    if (state.performanceCounterAvailable || state.ticksPerMillisecond != 0 ||
        state.getTickCount64 != nullptr || state.clockOrigin != 0) {
        std::exit(1);
    }
    if (!isBetween(monotonicMilliseconds, shortTicks)) {
        std::exit(2);
    }
    if (!isBetween(tickMilliseconds, shortTicks)) {
        std::exit(3);
    }
    if (!isBetween([] { return InitClock(true).getValue(); }, shortTicks)) {
        std::exit(4);
    }
    if (!isBetween([] { return MonotonicClock(true).getValue(); }, shortTicks)) {
        std::exit(5);
    }
    if (RealtimeClock(true).getValue() == 0) {
        std::exit(6);
    }
    std::exit(0);
}

TEST(ClockSource, BeforeStartTheMonotonicSourceIsTheShortTicks) {
    EXPECT_EXIT(checkClocksBeforeStart(), testing::ExitedWithCode(0), "");
}

TEST(ClockSource, CounterBelowOneTickPerMillisecondDividesByZero) {
    // As before the start, where the ticks are 0 too.
    const auto dividedByZero = [](int exitCode) {
        return static_cast<DWORD>(exitCode) == divisionByZero;
    };
    EXPECT_EXIT(std::exit(performanceMilliseconds() == 0 ? 1 : 2), dividedByZero, "");
}

TEST(RealtimeMilliseconds, IsTheSystemTimeSince1970) {
    const auto systemTime = [] {
        FILETIME now;
        GetSystemTimeAsFileTime(&now);
        ULARGE_INTEGER units;
        units.LowPart = now.dwLowDateTime;
        units.HighPart = now.dwHighDateTime;
        return static_cast<std::int64_t>(units.QuadPart / 10000) - 11644473600000;
    };
    EXPECT_TRUE(isBetween(realtimeMilliseconds, systemTime));
    EXPECT_TRUE(isBetween([] { return realtimeMilliseconds() / 1000; },
                          [] { return static_cast<std::int64_t>(_time64(nullptr)); }));
}

FILETIME fileTime(std::uint64_t units) {
    return {.dwLowDateTime = static_cast<DWORD>(units),
            .dwHighDateTime = static_cast<DWORD>(units >> 32)};
}

std::uint64_t unitsOf(const FILETIME& time) {
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

TEST(FileTime, OfTheYear1970) {
    EXPECT_EQ(unitsOf(unixToFileTime(0)), 116444736000000000u);
    EXPECT_EQ(fileTimeToUnix(fileTime(116444736000000000u)), 0);
}

TEST(FileTime, IsCutToMilliseconds) {
    EXPECT_EQ(fileTimeToUnix(fileTime(116444736000009999u)), 0);
    EXPECT_EQ(fileTimeToUnix(fileTime(116444736000010000u)), 1);
    EXPECT_EQ(fileTimeToUnix(fileTime(116444735999999999u)), -1);
    EXPECT_EQ(unitsOf(unixToFileTime(1)), 116444736000010000u);
}

TEST(FileTime, BeginsIn1601) {
    EXPECT_EQ(fileTimeToUnix(fileTime(0)), -11644473600000);
    EXPECT_EQ(unitsOf(unixToFileTime(-11644473600000)), 0u);
    EXPECT_EQ(unitsOf(unixToFileTime(-11644473600001)), static_cast<std::uint64_t>(-10000));
}

TEST(FileTime, IsUnsigned) {
    const std::uint64_t last = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(fileTimeToUnix(fileTime(last)),
              static_cast<std::int64_t>(last / 10000) - 11644473600000);
}

TEST(FileTime, RoundTrips) {
    for (const std::int64_t ms :
         {-11644473600000ll, -1ll, 0ll, 1ll, 1600000000123ll, 1833029933770955ll}) {
        EXPECT_EQ(fileTimeToUnix(unixToFileTime(ms)), ms);
    }
}

TEST(FileTime, HostileNumbersWrap) {
    const std::int64_t most = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(unitsOf(unixToFileTime(most)),
              (static_cast<std::uint64_t>(most) + 11644473600000u) * 10000u);
}

}  // namespace
