#include "vek/os/clock.h"

#include <ctime>

#include <gtest/gtest.h>

#include "vek/base/windows.h"

namespace {

// Both ends lie within a second, so that the difference is off by 1 at most.
void expectAbout(std::int64_t seconds, std::int64_t expected) {
    EXPECT_GE(seconds, expected);
    EXPECT_LE(seconds, expected + 1);
}

TEST(SecondsSinceStart, CountsFromTheFirstCallOnAndAnewFromStartSeconds) {
    EXPECT_EQ(vek::os::secondsSinceStart(), 0);
    const std::time_t start = std::time(nullptr);
    while (std::time(nullptr) < start + 2) {
        vek::os::sleepMilliseconds(50);
    }
    expectAbout(vek::os::secondsSinceStart(), 2);
    vek::os::startSeconds();
    expectAbout(vek::os::secondsSinceStart(), 0);
}

TEST(SleepMilliseconds, SleepsAsLongAsItIsTold) {
    LARGE_INTEGER frequency = {};
    LARGE_INTEGER before = {};
    LARGE_INTEGER after = {};
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&before);
    vek::os::sleepMilliseconds(100);
    QueryPerformanceCounter(&after);
    EXPECT_GE((after.QuadPart - before.QuadPart) * 1000 / frequency.QuadPart, 95);
    vek::os::sleepMilliseconds(0);
}

}  // namespace
