// Calendar arithmetic: seconds since 1970 and dates of the Gregorian calendar, which is applied to
// all years. Time zones and leap seconds are not considered.
//
// The functions throw nothing and are thread-safe.
#pragma once

#include <cstdint>

namespace vek::os {

// A FILETIME counts ticks from the beginning of 1601, UTC.
inline constexpr std::int64_t secondsFrom1601To1970 = 11644473600;
inline constexpr std::uint64_t fileTimeTicksPerSecond = 10000000;

// The calendar repeats itself after 400 years.
inline constexpr std::int64_t yearsPerCycle = 400;
inline constexpr std::int64_t daysPerCycle = 146097;

// Laid out like the system's SYSTEMTIME.
struct CalendarTime {
    std::uint16_t year;
    std::uint16_t month;      // 1 to 12
    std::uint16_t dayOfWeek;  // 0 is Sunday
    std::uint16_t day;        // 1 to 31
    std::uint16_t hour;
    std::uint16_t minute;
    std::uint16_t second;
    std::uint16_t milliseconds;
};

// Splits `seconds` since 1970 (negative before that) into the fields of `*time` and sets its
// milliseconds to 0. Returns 1; returns 0 and stores nothing if `time` is null or the year is not
// from 0 to 65535.
int breakDownTime(std::int64_t seconds, CalendarTime* time);

// The reverse. `dayOfWeek` and `milliseconds` are ignored; days, hours, minutes and seconds beyond
// their usual range carry over (February 30 is March 1 or 2). Returns -1 if `time` is null or its
// month is not from 1 to 12.
std::int64_t calendarSeconds(const CalendarTime* time);

// Returns 1 if `year` has a February 29, else 0.
int isLeapYear(int year);

}  // namespace vek::os
