#include "vek/os/calendar.h"

#include <cstddef>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "vek/base/windows.h"

namespace {

using vek::os::breakDownTime;
using vek::os::calendarSeconds;
using vek::os::CalendarTime;
using vek::os::isLeapYear;

constexpr std::int64_t day = 86400;
// The first second of the year 0 and the one behind the year 65535.
constexpr std::int64_t earliest = -719528 * day;
constexpr std::int64_t behindLatest = 2005949145600;

// By a rule of its own: the calendar repeats itself each 400 years, which have 146097 days.
std::int64_t daysByCounting(int year, int month, int dayOfMonth) {
    const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    std::int64_t days = 0;
    int at = 1970;
    for (; year < at; year += 400) {
        days -= 146097;
    }
    for (; year >= at + 400; year -= 400) {
        days += 146097;
    }
    const auto isLeap = [](int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; };
    for (; at < year; ++at) {
        days += isLeap(at) ? 366 : 365;
    }
    for (int m = 1; m < month; ++m) {
        days += lengths[m - 1] + (m == 2 && isLeap(year) ? 1 : 0);
    }
    return days + dayOfMonth - 1;
}

TEST(CalendarTime, IsLaidOutLikeTheSystemsRecord) {
    EXPECT_EQ(sizeof(CalendarTime), sizeof(SYSTEMTIME));
    EXPECT_EQ(offsetof(CalendarTime, year), offsetof(SYSTEMTIME, wYear));
    EXPECT_EQ(offsetof(CalendarTime, month), offsetof(SYSTEMTIME, wMonth));
    EXPECT_EQ(offsetof(CalendarTime, dayOfWeek), offsetof(SYSTEMTIME, wDayOfWeek));
    EXPECT_EQ(offsetof(CalendarTime, day), offsetof(SYSTEMTIME, wDay));
    EXPECT_EQ(offsetof(CalendarTime, hour), offsetof(SYSTEMTIME, wHour));
    EXPECT_EQ(offsetof(CalendarTime, minute), offsetof(SYSTEMTIME, wMinute));
    EXPECT_EQ(offsetof(CalendarTime, second), offsetof(SYSTEMTIME, wSecond));
    EXPECT_EQ(offsetof(CalendarTime, milliseconds), offsetof(SYSTEMTIME, wMilliseconds));
}

TEST(BreakDownTime, SplitsKnownMoments) {
    const struct {
        std::int64_t seconds;
        CalendarTime time;
    } rows[] = {
        {0, {1970, 1, 4, 1, 0, 0, 0, 0}},
        {-1, {1969, 12, 3, 31, 23, 59, 59, 0}},
        {-day, {1969, 12, 3, 31, 0, 0, 0, 0}},
        {951782400, {2000, 2, 2, 29, 0, 0, 0, 0}},
        {951868799, {2000, 2, 2, 29, 23, 59, 59, 0}},
        {951868800, {2000, 3, 3, 1, 0, 0, 0, 0}},
        {1000000000, {2001, 9, 0, 9, 1, 46, 40, 0}},
        {1078012800, {2004, 2, 0, 29, 0, 0, 0, 0}},
        {2147483647, {2038, 1, 2, 19, 3, 14, 7, 0}},
        {2147483648, {2038, 1, 2, 19, 3, 14, 8, 0}},
        {4107542400, {2100, 3, 1, 1, 0, 0, 0, 0}},
        {-2147483648LL, {1901, 12, 5, 13, 20, 45, 52, 0}},
        {-11644473600, {1601, 1, 1, 1, 0, 0, 0, 0}},
        {earliest, {0, 1, 6, 1, 0, 0, 0, 0}},
        {behindLatest - 1, {65535, 12, 2, 31, 23, 59, 59, 0}},
    };
    for (const auto& row : rows) {
        CalendarTime time;
        std::memset(&time, 0x55, sizeof time);
        EXPECT_EQ(breakDownTime(row.seconds, &time), 1);
        EXPECT_EQ(time.year, row.time.year) << row.seconds;
        EXPECT_EQ(time.month, row.time.month) << row.seconds;
        EXPECT_EQ(time.dayOfWeek, row.time.dayOfWeek) << row.seconds;
        EXPECT_EQ(time.day, row.time.day) << row.seconds;
        EXPECT_EQ(time.hour, row.time.hour) << row.seconds;
        EXPECT_EQ(time.minute, row.time.minute) << row.seconds;
        EXPECT_EQ(time.second, row.time.second) << row.seconds;
        EXPECT_EQ(time.milliseconds, 0) << row.seconds;
        EXPECT_EQ(calendarSeconds(&time), row.seconds);
    }
}

TEST(BreakDownTime, AgreesWithTheSystemOverItsRange) {
    // A prime number of seconds, so that all times of the day are met, from 1601 to 30827.
    for (std::int64_t seconds = -11644473600; seconds < 910000000000; seconds += 40000003) {
        const std::uint64_t ticks = static_cast<std::uint64_t>(seconds + 11644473600) * 10000000;
        const FILETIME fileTime = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
        SYSTEMTIME expected = {};
        ASSERT_NE(FileTimeToSystemTime(&fileTime, &expected), 0);
        CalendarTime time = {};
        ASSERT_EQ(breakDownTime(seconds, &time), 1);
        ASSERT_EQ(std::memcmp(&time, &expected, sizeof time), 0) << seconds;
    }
}

TEST(BreakDownTime, RoundTripsEachDayOfTheNearCenturies) {
    CalendarTime former = {};
    ASSERT_EQ(breakDownTime(-200000 * day, &former), 1);
    for (std::int64_t days = -199999; days < 200000; ++days) {
        CalendarTime time = {};
        ASSERT_EQ(breakDownTime(days * day + 86399, &time), 1);
        ASSERT_EQ(calendarSeconds(&time), days * day + 86399);
        ASSERT_EQ(time.dayOfWeek, (former.dayOfWeek + 1) % 7);
        // The day after, or the first of a month or a year.
        if (time.day != 1) {
            ASSERT_EQ(time.day, former.day + 1);
            ASSERT_EQ(time.month, former.month);
        } else if (time.month != 1) {
            ASSERT_EQ(time.month, former.month + 1);
        } else {
            ASSERT_EQ(time.year, former.year + 1);
        }
        former = time;
    }
}

TEST(BreakDownTime, RoundTripsOverAllYears) {
    for (std::int64_t seconds = earliest; seconds < behindLatest; seconds += 7654321) {
        CalendarTime time = {};
        ASSERT_EQ(breakDownTime(seconds, &time), 1);
        ASSERT_EQ(calendarSeconds(&time), seconds);
        ASSERT_EQ(daysByCounting(time.year, time.month, time.day),
                  seconds >= 0 ? seconds / day : -((-seconds + day - 1) / day));
    }
}

TEST(BreakDownTime, YearThatDoesNotFitStoresNothing) {
    for (const std::int64_t seconds :
         {earliest - 1, behindLatest, std::numeric_limits<std::int64_t>::min(),
          std::numeric_limits<std::int64_t>::max()}) {
        CalendarTime time = {};
        time.year = 77;
        EXPECT_EQ(breakDownTime(seconds, &time), 0);
        EXPECT_EQ(time.year, 77);
        EXPECT_EQ(time.month, 0);
    }
}

TEST(BreakDownTime, NullOutputGivesZero) {
    EXPECT_EQ(breakDownTime(0, nullptr), 0);
}

TEST(CalendarSeconds, WeekDayAndMillisecondsDoNotCount) {
    const CalendarTime time = {2001, 9, 5, 9, 1, 46, 40, 999};
    EXPECT_EQ(calendarSeconds(&time), 1000000000);
}

TEST(CalendarSeconds, FieldsBeyondTheirRangeCarryOver) {
    const CalendarTime commonYear = {2001, 2, 0, 30, 0, 0, 0, 0};
    const CalendarTime commonMarch = {2001, 3, 0, 2, 0, 0, 0, 0};
    EXPECT_EQ(calendarSeconds(&commonYear), calendarSeconds(&commonMarch));
    const CalendarTime leapYear = {2000, 2, 0, 30, 0, 0, 0, 0};
    const CalendarTime leapMarch = {2000, 3, 0, 1, 0, 0, 0, 0};
    EXPECT_EQ(calendarSeconds(&leapYear), calendarSeconds(&leapMarch));
    const CalendarTime dayZero = {2000, 1, 0, 0, 24, 60, 60, 0};
    EXPECT_EQ(calendarSeconds(&dayZero), 946684800 + 3600 + 60);
    const CalendarTime largest = {65535, 12, 65535, 65535, 65535, 65535, 65535, 65535};
    EXPECT_EQ(calendarSeconds(&largest), behindLatest + (65535 - 32) * day + 65535LL * 3661);
}

TEST(CalendarSeconds, WithoutAMonthIsMinusOne) {
    for (const int month : {0, 13, 65535}) {
        const CalendarTime time = {2000, static_cast<std::uint16_t>(month), 0, 1, 0, 0, 0, 0};
        EXPECT_EQ(calendarSeconds(&time), -1);
    }
    EXPECT_EQ(calendarSeconds(nullptr), -1);
}

TEST(IsLeapYear, FollowsTheGregorianRule) {
    for (const int year : {0, 4, 1600, 1904, 1972, 1996, 2000, 2004, 2400, 30000, -4, -400}) {
        EXPECT_EQ(isLeapYear(year), 1) << year;
    }
    for (const int year : {1, 1700, 1800, 1900, 1970, 1999, 2001, 2100, 2200, 2300, -1, -100}) {
        EXPECT_EQ(isLeapYear(year), 0) << year;
    }
}

}  // namespace
