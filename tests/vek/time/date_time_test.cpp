#include "vek/time/date_time.h"

#include <limits>
#include <sstream>

#include <gtest/gtest.h>

#include "vek/base/windows.h"
#include "vek/time/clock_source.h"

namespace {

using vek::time::DateTime;

DateTime date(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
              int milliseconds = 0) {
    DateTime result;
    result.year = static_cast<std::uint16_t>(year);
    result.month = static_cast<std::uint16_t>(month);
    result.day = static_cast<std::uint16_t>(day);
    result.hour = static_cast<std::uint16_t>(hour);
    result.minute = static_cast<std::uint16_t>(minute);
    result.second = static_cast<std::uint16_t>(second);
    result.milliseconds = static_cast<std::uint16_t>(milliseconds);
    return result;
}

DateTime utcDate(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    DateTime result = date(year, month, day, hour, minute, second);
    result.utc = true;
    return result;
}

// Seconds from local to universal time in winter.
std::int64_t winterBias() {
    TIME_ZONE_INFORMATION zone = {};
    GetTimeZoneInformation(&zone);
    return std::int64_t{zone.Bias + zone.StandardBias} * 60;
}

std::int64_t secondsNow() {
    return vek::time::realtimeMilliseconds() / 1000;
}

TEST(DateTime, IsNullWhenMade) {
    const DateTime made;
    EXPECT_TRUE(made.isNull());
    EXPECT_FALSE(made.utc);
}

TEST(DateTime, IsNullUnlessAnyFieldOfTheSystemsIsSet) {
    std::uint16_t DateTime::*const fields[] = {
        &DateTime::year, &DateTime::month,  &DateTime::dayOfWeek, &DateTime::day,
        &DateTime::hour, &DateTime::minute, &DateTime::second,    &DateTime::milliseconds};
    for (const auto field : fields) {
        DateTime set;
        set.*field = 1;
        EXPECT_FALSE(set.isNull());
    }
    DateTime utc;
    utc.utc = true;
    EXPECT_TRUE(utc.isNull());
}

TEST(DateTime, SetUtcNowTakesUniversalTime) {
    DateTime now;
    const std::int64_t before = secondsNow();
    now.setUtcNow();
    EXPECT_TRUE(now.utc);
    EXPECT_LE(before, now.toSeconds());
    EXPECT_LE(now.toSeconds(), secondsNow());
}

TEST(DateTime, TheTimeOfNowHasMilliseconds) {
    using Take = void (DateTime::*)();
    for (const Take take : {&DateTime::setUtcNow, &DateTime::setLocalNow}) {
        // At moments of their own within the second.
        for (int i = 0; i < 5; ++i) {
            DateTime now;
            const std::int64_t before = vek::time::realtimeMilliseconds();
            (now.*take)();
            const std::int64_t after = vek::time::realtimeMilliseconds();
            const std::int64_t taken = now.milliseconds;
            EXPECT_LE((taken - before % 1000 + 1000) % 1000, after - before) << before;
            Sleep(37);
        }
    }
}

TEST(DateTime, SetLocalNowTakesLocalTime) {
    DateTime now;
    now.utc = true;
    SYSTEMTIME system;
    // Again if the hour has changed in between.
    do {
        now.setLocalNow();
        GetLocalTime(&system);
    } while (now.hour != system.wHour);
    EXPECT_FALSE(now.utc);
    EXPECT_EQ(now.year, system.wYear);
    EXPECT_EQ(now.month, system.wMonth);
    EXPECT_EQ(now.day, system.wDay);
    EXPECT_EQ(now.dayOfWeek, system.wDayOfWeek);
    EXPECT_LE(std::abs(now.toSeconds() - secondsNow()), 10);
}

TEST(DateTime, SetLocalFromSecondsGivesLocalTime) {
    DateTime local;
    local.utc = true;
    local.setLocalFromSeconds(951826225 + winterBias());
    EXPECT_FALSE(local.utc);
    EXPECT_EQ(local.year, 2000);
    EXPECT_EQ(local.month, 2);
    EXPECT_EQ(local.day, 29);
    EXPECT_EQ(local.dayOfWeek, 2);
    EXPECT_EQ(local.hour, 12);
    EXPECT_EQ(local.minute, 10);
    EXPECT_EQ(local.second, 25);
    EXPECT_EQ(local.milliseconds, 0);
}

TEST(DateTime, SetLocalFromSecondsKnowsSummerTime) {
    TIME_ZONE_INFORMATION zone = {};
    GetTimeZoneInformation(&zone);
    if (zone.DaylightDate.wMonth == 0) {
        GTEST_SKIP() << "this time zone has no summer time";
    }
    DateTime winter;
    winter.setLocalFromSeconds(1579089600);  // 2020-01-15 12:00 UTC
    DateTime summer;
    summer.setLocalFromSeconds(1594814400);  // 2020-07-15 12:00 UTC
    EXPECT_NE(winter.hour, summer.hour);
    EXPECT_EQ(winter.toSeconds(), 1579089600);
    EXPECT_EQ(summer.toSeconds(), 1594814400);
}

TEST(DateTime, SecondsRoundTripThroughLocalTime) {
    for (const std::int64_t seconds :
         {std::int64_t{0}, std::int64_t{-1}, std::int64_t{86399}, std::int64_t{4102444800},
          std::int64_t{-11600000000}, std::int64_t{250000000000}}) {
        DateTime local;
        local.setLocalFromSeconds(seconds);
        EXPECT_EQ(local.toSeconds(), seconds);
    }
}

TEST(DateTime, SetLocalFromSecondsOutsideOfTheCalendarChangesNothing) {
    const DateTime before = utcDate(2001, 2, 3, 4, 5, 6);
    for (const std::int64_t seconds :
         {std::int64_t{-11644473601}, std::int64_t{-20000000000},
          std::int64_t{910692730086}}) {  // 1600, 1336, and beyond the signed file times
        DateTime kept = before;
        kept.setLocalFromSeconds(seconds);
        EXPECT_EQ(kept.toSeconds(), before.toSeconds()) << seconds;
        EXPECT_TRUE(kept.utc);
    }
}

TEST(DateTime, ToSecondsOfUniversalTime) {
    EXPECT_EQ(utcDate(1970, 1, 1).toSeconds(), 0);
    EXPECT_EQ(utcDate(2000, 2, 29, 12, 10, 25).toSeconds(), 951826225);
    EXPECT_EQ(utcDate(1969, 12, 31, 23, 59, 59).toSeconds(), -1);
    EXPECT_EQ(utcDate(1601, 1, 1).toSeconds(), -11644473600);
}

TEST(DateTime, ToSecondsOfLocalTime) {
    EXPECT_EQ(date(1970, 1, 2).toSeconds(), 86400 + winterBias());
}

TEST(DateTime, ToSecondsIsCut) {
    DateTime almost = utcDate(1970, 1, 1);
    almost.milliseconds = 999;
    EXPECT_EQ(almost.toSeconds(), 0);
}

TEST(DateTime, ToSecondsOfABadDateIsZero) {
    EXPECT_EQ(DateTime().toSeconds(), 0);
    EXPECT_EQ(date(2001, 13, 1).toSeconds(), 0);
    EXPECT_EQ(date(2001, 2, 30).toSeconds(), 0);
    EXPECT_EQ(utcDate(2001, 2, 30).toSeconds(), 0);
    EXPECT_EQ(utcDate(2001, 1, 1, 24).toSeconds(), 0);
    EXPECT_EQ(utcDate(65535, 65535, 65535, 65535, 65535, 65535).toSeconds(), 0);
}

TEST(DateTime, NormalisePutsTheDayOfTheWeekRight) {
    DateTime wrong = date(2000, 2, 29, 1, 2, 3, 4);
    wrong.dayOfWeek = 6;
    wrong.normalise();
    EXPECT_EQ(wrong.dayOfWeek, 2);
    EXPECT_EQ(wrong.year, 2000);
    EXPECT_EQ(wrong.month, 2);
    EXPECT_EQ(wrong.day, 29);
    EXPECT_EQ(wrong.hour, 1);
    EXPECT_EQ(wrong.minute, 2);
    EXPECT_EQ(wrong.second, 3);
    EXPECT_EQ(wrong.milliseconds, 4);
}

TEST(DateTime, NormaliseLeavesUniversalTimeAlone) {
    DateTime wrong = utcDate(2000, 2, 29);
    wrong.dayOfWeek = 6;
    wrong.normalise();
    EXPECT_EQ(wrong.dayOfWeek, 6);
}

TEST(DateTime, NormaliseLeavesABadDateAsItIs) {
    DateTime bad = date(2001, 2, 30);
    bad.dayOfWeek = 6;
    bad.normalise();
    EXPECT_EQ(bad.year, 2001);
    EXPECT_EQ(bad.month, 2);
    EXPECT_EQ(bad.day, 30);
    EXPECT_EQ(bad.dayOfWeek, 6);
}

TEST(DateTime, ToTmFillsAllButTheDayOfTheYear) {
    DateTime from = date(2021, 11, 30, 23, 59, 58);
    from.dayOfWeek = 2;
    std::tm broken = {};
    broken.tm_yday = 77;
    broken.tm_isdst = 1;
    from.toTm(broken);
    EXPECT_EQ(broken.tm_sec, 58);
    EXPECT_EQ(broken.tm_min, 59);
    EXPECT_EQ(broken.tm_hour, 23);
    EXPECT_EQ(broken.tm_mday, 30);
    EXPECT_EQ(broken.tm_mon, 10);
    EXPECT_EQ(broken.tm_year, 121);
    EXPECT_EQ(broken.tm_wday, 2);
    EXPECT_EQ(broken.tm_yday, 77);
    EXPECT_EQ(broken.tm_isdst, 1);
    from.utc = true;
    from.toTm(broken);
    EXPECT_EQ(broken.tm_isdst, 0);
}

TEST(DateTime, FromTmKeepsMillisecondsAndUtc) {
    std::tm broken = {};
    broken.tm_sec = 58;
    broken.tm_min = 59;
    broken.tm_hour = 23;
    broken.tm_mday = 30;
    broken.tm_mon = 10;
    broken.tm_year = 121;
    broken.tm_wday = 2;
    DateTime to = utcDate(1, 1, 1);
    to.milliseconds = 123;
    to.fromTm(broken);
    EXPECT_EQ(to.year, 2021);
    EXPECT_EQ(to.month, 11);
    EXPECT_EQ(to.dayOfWeek, 2);
    EXPECT_EQ(to.day, 30);
    EXPECT_EQ(to.hour, 23);
    EXPECT_EQ(to.minute, 59);
    EXPECT_EQ(to.second, 58);
    EXPECT_EQ(to.milliseconds, 123);
    EXPECT_TRUE(to.utc);
}

TEST(DateTime, FromTmWrapsHostileNumbers) {
    std::tm broken = {};
    broken.tm_year = std::numeric_limits<int>::max();
    broken.tm_mon = std::numeric_limits<int>::max();
    DateTime to;
    to.fromTm(broken);
    EXPECT_EQ(to.year, 1899);
    EXPECT_EQ(to.month, 0);
}

TEST(DateTime, FormatsANormalisedCopy) {
    DateTime from = date(2000, 2, 29, 12, 10, 25);
    from.dayOfWeek = 6;
    EXPECT_EQ(from.format("%Y-%m-%d %H:%M:%S %a"), "2000-02-29 12:10:25 Tue");
    EXPECT_EQ(from.dayOfWeek, 6);
    from.utc = true;
    EXPECT_EQ(from.format("%a"), "Sat");
}

TEST(DateTime, FormatDoesNotKnowTheDayOfTheYear) {
    EXPECT_EQ(date(2000, 2, 29).format("%j"), "001");
}

TEST(DateTime, FormatGivesUpTo255Characters) {
    const DateTime from = date(2000, 2, 29);
    EXPECT_EQ(from.format(""), "");
    EXPECT_EQ(from.format(std::string(255, 'x').c_str()), std::string(255, 'x'));
    EXPECT_EQ(from.format((std::string(251, 'x') + "%Y").c_str()), std::string(251, 'x') + "2000");
}

TEST(DateTime, FormatOf256CharactersOrMoreIsEmpty) {
    const DateTime from = date(2000, 2, 29);
    EXPECT_EQ(from.format(std::string(256, 'x').c_str()), "");
    EXPECT_EQ(from.format((std::string(252, 'x') + "%Y").c_str()), "");
    EXPECT_EQ(from.format(std::string(100000, 'x').c_str()), "");
}

TEST(DateTime, HostileFieldsAreFormattedWithoutHarm) {
    EXPECT_NO_THROW(DateTime().toString());
    EXPECT_NO_THROW(date(65535, 65535, 65535, 65535, 65535, 65535).format("%c %b %a %p %x"));
}

TEST(DateTime, TextIsThatOfTheStandardFormat) {
    const DateTime from = date(2000, 2, 29, 12, 10, 25);
    EXPECT_EQ(from.toString(), from.format("%c"));
    EXPECT_NE(from.toString().find("12:10:25"), std::string::npos);
    std::ostringstream stream;
    stream << from << '|';
    EXPECT_EQ(stream.str(), from.toString() + "|");
}

TEST(DateTime, KnowsLeapYears) {
    for (const int year : {2000, 1600, 2004, 1996, 0}) {
        EXPECT_TRUE(date(year, 1, 1).isLeapYear()) << year;
    }
    for (const int year : {1900, 2100, 2001, 1999, 65535}) {
        EXPECT_FALSE(date(year, 1, 1).isLeapYear()) << year;
    }
}

TEST(DateTime, FormatThatTheRuntimeRefusesEndsNothing) {
    for (const char* format : {"%", "%Q", "%#", "100%", "%Y%"}) {
        EXPECT_LE(date(2000, 1, 1).format(format).size(), 16u) << format;
    }
    DateTime hostile = date(65535, 65535, 65535);
    hostile.dayOfWeek = 65535;
    hostile.hour = 65535;
    for (const char* format : {"%a", "%b", "%c", "%p", "%U", "%Z"}) {
        EXPECT_LT(hostile.format(format).size(), 256u) << format;
    }
}

TEST(DateTime, SecondsBeyondTheRangeOfMillisecondsWrap) {
    DateTime wrapped;
    DateTime expected;
    // 2^61 seconds are 1000 * 2^61 milliseconds, a multiple of 2^64.
    wrapped.setLocalFromSeconds((std::int64_t{1} << 61) + 1000000000);
    expected.setLocalFromSeconds(1000000000);
    EXPECT_EQ(wrapped.toString(), expected.toString());
}

}  // namespace
