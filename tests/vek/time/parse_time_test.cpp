#include "vek/time/parse_time.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace {

using vek::ParseError;
using vek::time::DateTime;
using vek::time::parseTime;

constexpr const char* isoFormat = "%Y-%m-%d %H:%M:%S";

// Names another locale in the environment for a scope.
class LocaleVariable {
  public:
    explicit LocaleVariable(const std::string& value) { _putenv(("LC_ALL=" + value).c_str()); }
    ~LocaleVariable() { _putenv("LC_ALL=C"); }
};

TEST(ParseTime, ReadsAllFields) {
    const DateTime date = parseTime(isoFormat, "2000-02-29 12:10:25");
    EXPECT_EQ(date.year, 2000);
    EXPECT_EQ(date.month, 2);
    EXPECT_EQ(date.day, 29);
    EXPECT_EQ(date.hour, 12);
    EXPECT_EQ(date.minute, 10);
    EXPECT_EQ(date.second, 25);
    EXPECT_EQ(date.milliseconds, 0);
    EXPECT_FALSE(date.utc);
}

TEST(ParseTime, FillsInTheDayOfTheWeek) {
    EXPECT_EQ(parseTime(isoFormat, "2000-02-29 00:00:00").dayOfWeek, 2);
    EXPECT_EQ(parseTime(isoFormat, "2021-11-21 00:00:00").dayOfWeek, 0);
}

TEST(ParseTime, BringsTheDateIntoItsRange) {
    const DateTime date = parseTime(isoFormat, "2001-02-30 12:00:00");
    EXPECT_EQ(date.month, 3);
    EXPECT_EQ(date.day, 2);
    EXPECT_EQ(date.dayOfWeek, 5);
}

TEST(ParseTime, GoesBeyond2038) {
    const DateTime date = parseTime(isoFormat, "2040-01-31 00:00:00");
    EXPECT_EQ(date.year, 2040);
    EXPECT_EQ(date.dayOfWeek, 2);
}

TEST(ParseTime, ReadsStandardTimeInSummerToo) {
    TIME_ZONE_INFORMATION zone = {};
    GetTimeZoneInformation(&zone);
    if (zone.DaylightDate.wMonth == 0) {
        GTEST_SKIP() << "this time zone has no summer time";
    }
    EXPECT_EQ(parseTime(isoFormat, "2020-07-15 12:00:00").hour, 13);
    EXPECT_EQ(parseTime(isoFormat, "2020-01-15 12:00:00").hour, 12);
}

TEST(ParseTime, TakesOtherFormats) {
    EXPECT_EQ(parseTime("%d/%b/%y", "01/Feb/99").format("%Y-%m-%d"), "1999-02-01");
    EXPECT_EQ(parseTime("at %H", "at 7").hour, 7);
}

TEST(ParseTime, DateBeforeTheRuntimesCountStaysAsItWasRead) {
    const DateTime date = parseTime("%Y-%m-%d", "1500-02-03");
    EXPECT_EQ(date.year, 1500);
    EXPECT_EQ(date.month, 2);
    EXPECT_EQ(date.day, 3);
}

TEST(ParseTime, WhatFollowsIsNotLookedAt) {
    EXPECT_EQ(parseTime("%Y-%m-%d", "2001-02-03 and more").day, 3);
}

TEST(ParseTime, FieldsThatTheFormatDoesNotNameAreZero) {
    EXPECT_EQ(parseTime("%m-%d", "02-03").format("%Y-%m-%d %H:%M:%S"), "1900-02-03 00:00:00");
    // The day 0 is the one before the first.
    EXPECT_EQ(parseTime("%Y", "2001").format("%Y-%m-%d"), "2000-12-31");
}

TEST(ParseTime, TextThatDoesNotMatchThrows) {
    try {
        parseTime(isoFormat, "yesterday");
        FAIL();
    } catch (const ParseError& error) {
        EXPECT_EQ(error.input(), "yesterday");
        EXPECT_STREQ(error.what(),
                     "Parse error: Couldn't parse 'yesterday': Could not parse time using format "
                     "string '%Y-%m-%d %H:%M:%S'");
    }
}

TEST(ParseTime, HostileTextsThrow) {
    for (const std::string& text :
         {std::string(), std::string("2000-"), std::string("2000-13-01 00:00:00"),
          std::string("2000-02-29 25:00:00"), std::string(70000, '9'), std::string(1, '\0')}) {
        EXPECT_THROW(parseTime(isoFormat, text), ParseError) << text.substr(0, 30);
    }
}

TEST(ParseTime, LocaleThatTheRuntimeLacksIsReplacedByTheClassicOne) {
    const LocaleVariable variable("no_SUCH.locale");
    EXPECT_EQ(parseTime(isoFormat, "2000-02-29 12:10:25").dayOfWeek, 2);
    EXPECT_THROW(parseTime(isoFormat, "yesterday"), ParseError);
}

TEST(ParseTime, IncompleteTextThrows) {
    for (const char* text : {"2024", "2024-", "2024-02", "2024-02-"}) {
        EXPECT_THROW(parseTime("%Y-%m-%d", text), ParseError) << text;
    }
    EXPECT_THROW(parseTime(isoFormat, "2000-02-29"), ParseError);
    EXPECT_THROW(parseTime(isoFormat, "2000-02-29 12:10"), ParseError);
    EXPECT_THROW(parseTime("%Y literal", "2024 lit"), ParseError);
    EXPECT_THROW(parseTime("%d %B", "3"), ParseError);
}

TEST(ParseTime, ErrorOfAnIncompleteTextNamesTheText) {
    try {
        parseTime("%Y-%m-%d", "2024-02");
        FAIL();
    } catch (const ParseError& error) {
        EXPECT_EQ(error.input(), "2024-02");
    }
}

TEST(ParseTime, NumberAtTheEndMayBeShort) {
    EXPECT_EQ(parseTime("%Y-%m-%d", "2024-2-1").format("%Y-%m-%d"), "2024-02-01");
    EXPECT_EQ(parseTime("%H:%M", "7:5").minute, 5);
}

TEST(ParseTime, SpaceAtTheEndOfTheFormatMayBeMissing) {
    EXPECT_EQ(parseTime("%Y-%m-%d ", "2024-02-03").day, 3);
    EXPECT_EQ(parseTime("%Y-%m-%d \n", "2024-02-03 ").day, 3);
}

TEST(ParseTime, BlankTextThrows) {
    for (const char* format : {"%Y", "%d", "", " "}) {
        EXPECT_THROW(parseTime(format, ""), ParseError) << format;
        EXPECT_THROW(parseTime(format, "  "), ParseError) << format;
    }
}

}  // namespace
