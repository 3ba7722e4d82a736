#include "vek/thread/deadline.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

using vek::thread::millisecondsUntil;
using vek::time::MonotonicClock;

MonotonicClock in(std::int64_t milliseconds) {
    MonotonicClock clock(true);
    clock += milliseconds;
    return clock;
}

TEST(MillisecondsUntil, IsTheTimeLeft) {
    const std::uint32_t left = millisecondsUntil(in(100000));
    EXPECT_LE(left, 100000u);
    EXPECT_GT(left, 50000u);
}

TEST(MillisecondsUntil, IsZeroOnceTheDeadlineHasPassed) {
    EXPECT_EQ(millisecondsUntil(in(-1)), 0u);
    EXPECT_EQ(millisecondsUntil(in(-5000000000)), 0u);
    EXPECT_EQ(millisecondsUntil(MonotonicClock(false)), 0u);
}

TEST(MillisecondsUntil, IsCutTo32Bits) {
    const std::uint32_t left = millisecondsUntil(in((std::int64_t{1} << 32) + 100000));
    EXPECT_LE(left, 100000u);
    EXPECT_GT(left, 50000u);
}

TEST(MillisecondsUntil, LongestDurationIsCutToo) {
    // All of its low bits are set. The clock has wrapped, and so does the difference.
    EXPECT_GT(millisecondsUntil(in(std::numeric_limits<std::int64_t>::max())), 4294900000u);
}

}  // namespace
