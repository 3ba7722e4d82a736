#include "vek/time/clock.h"

#include <limits>
#include <type_traits>

#include <gtest/gtest.h>

#include "vek/time/clock_source.h"

namespace {

using namespace vek::time;

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();

// Stamps of sources that are read one after the other; on a machine at rest they are equal.
constexpr std::int64_t tolerance = 10000;

class Clocks : public testing::Test {
  protected:
    void SetUp() override {
        initClocks();
        initClockOrigin();
    }
};

class ClockOfKind final : public ClockBase {
  public:
    ClockOfKind(std::uint32_t clockKind, std::int64_t startValue) : ClockBase(clockKind) {
        value = startValue;
    }
};

TEST_F(Clocks, HaveTheirKinds) {
    EXPECT_EQ(RealtimeClock(false).getKind(), 0u);
    EXPECT_EQ(MonotonicClock(false).getKind(), 1u);
    EXPECT_EQ(InitClock(false).getKind(), 2u);
}

TEST_F(Clocks, HoldZeroUntilTheyAreRefreshed) {
    RealtimeClock realtime(false);
    MonotonicClock monotonic(false);
    EXPECT_EQ(realtime.getValue(), 0);
    EXPECT_EQ(monotonic.getValue(), 0);
    EXPECT_EQ(InitClock(false).getValue(), 0);
    realtime.refresh();
    monotonic.refresh();
    EXPECT_NE(realtime.getValue(), 0);
    EXPECT_NE(monotonic.getValue(), 0);
}

TEST_F(Clocks, ReadTheirSourceAtConstruction) {
    std::int64_t before = realtimeMilliseconds();
    const RealtimeClock realtime(true);
    EXPECT_LE(before, realtime.getValue());
    EXPECT_LE(realtime.getValue(), realtimeMilliseconds());

    before = monotonicMilliseconds();
    const MonotonicClock monotonic(true);
    EXPECT_LE(before, monotonic.getValue());
    EXPECT_LE(monotonic.getValue(), monotonicMilliseconds());
}

TEST_F(Clocks, KeepTheirStampUntilTheNextRefresh) {
    MonotonicClock clock(true);
    const std::int64_t first = clock.getValue();
    while (monotonicMilliseconds() == first) {
    }
    EXPECT_EQ(clock.getValue(), first);
    clock.refresh();
    EXPECT_GT(clock.getValue(), first);
}

TEST_F(Clocks, InitClockIsSmallRightAfterStart) {
    const InitClock clock(true);
    EXPECT_GE(clock.getValue(), 0);
    EXPECT_LT(clock.getValue(), tolerance);
}

TEST_F(Clocks, InitClockGoesWithTheMonotonicSource) {
    const std::int64_t before = monotonicMilliseconds() - clockState().clockOrigin;
    InitClock clock(true);
    const std::int64_t first = clock.getValue();
    EXPECT_LE(before, first);
    while (monotonicMilliseconds() - clockState().clockOrigin < first + 5) {
    }
    clock.refresh();
    EXPECT_GE(clock.getValue(), first + 5);
    EXPECT_LE(clock.getValue(), monotonicMilliseconds() - clockState().clockOrigin);
}

TEST_F(Clocks, BaseOfKindTwoReadsTheSourceWithoutTheOrigin) {
    ClockOfKind clock(2, 0);
    const std::int64_t before = monotonicMilliseconds();
    clock.refresh();
    EXPECT_GE(clock.getValue(), before);
}

TEST_F(Clocks, UnknownKindKeepsItsValue) {
    for (const std::uint32_t kind : {3u, 7u, 0xFFFFFFFFu}) {
        ClockOfKind clock(kind, 42);
        clock.refresh();
        EXPECT_EQ(clock.getValue(), 42);
    }
}

TEST_F(Clocks, RefreshThroughTheInterface) {
    const auto sinceStart = [] { return monotonicMilliseconds() - clockState().clockOrigin; };
    InitClock clock(false);
    ASSERT_EQ(clock.getValue(), 0);
    while (sinceStart() == 0) {
    }
    const std::int64_t before = sinceStart();
    static_cast<OsClock&>(clock).refresh();
    EXPECT_GE(clock.getValue(), before);
    EXPECT_LE(clock.getValue(), sinceStart());
}

TEST(Clock, IsMovedInPlaceByDurations) {
    MonotonicClock clock(false);
    EXPECT_EQ(&(clock += 500), &clock);
    EXPECT_EQ(clock.getValue(), 500);
    EXPECT_EQ(&(clock -= 1500), &clock);
    EXPECT_EQ(clock.getValue(), -1000);
}

TEST(Clock, DifferenceIsADuration) {
    MonotonicClock a(false);
    MonotonicClock b(false);
    a += 7;
    b += 12;
    EXPECT_EQ(b - a, 5);
    EXPECT_EQ(a - b, -5);
    static_assert(std::is_same_v<decltype(a - b), std::int64_t>);
}

TEST(Clock, CopyHasTheValueAndIsItsOwn) {
    MonotonicClock original(false);
    original += 3;
    MonotonicClock copy(original);
    original += 1;
    EXPECT_EQ(copy.getValue(), 3);
    copy = original;
    EXPECT_EQ(copy.getValue(), 4);
    EXPECT_EQ(copy.getKind(), 1u);
}

TEST(Clock, AssignmentCopiesTheValueAndKeepsTheKind) {
    ClockOfKind a(7, 10);
    const ClockOfKind b(8, 20);
    a = b;
    EXPECT_EQ(a.getValue(), 20);
    EXPECT_EQ(a.getKind(), 7u);
}

TEST(Clock, ValuesBeyondTheirRangeWrap) {
    ClockOfKind clock(7, largest);
    clock += 1;
    EXPECT_EQ(clock.getValue(), smallest);
    clock -= 1;
    EXPECT_EQ(clock.getValue(), largest);
    EXPECT_EQ(clock - ClockOfKind(7, -1), smallest);
}

TEST(RealtimeClock, HoldsZeroAt1970) {
    RealtimeClock clock(false);
    const FILETIME fileTime = unixToFileTime(clock.getValue());
    SYSTEMTIME broken;
    ASSERT_NE(FileTimeToSystemTime(&fileTime, &broken), 0);
    EXPECT_EQ(broken.wYear, 1970);
    EXPECT_EQ(broken.wMonth, 1);
    EXPECT_EQ(broken.wDay, 1);
    EXPECT_EQ(broken.wHour + broken.wMinute + broken.wSecond + broken.wMilliseconds, 0);
}

}  // namespace
