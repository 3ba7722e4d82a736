// Calendar arithmetic: seconds since 1970 and dates of the Gregorian calendar, which is taken to
// have been in force at all times. Time zones and leap seconds have no part in it.
//
// The functions throw nothing and are safe from any thread.
#pragma once

#include <cstdint>

namespace vek::os {

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

// Splits `seconds` since 1970, which are negative before that, into the fields of `*time`, its
// milliseconds being 0. The result is 1. It is 0, and nothing is stored, if `time` is null or the
// year isn't one from 0 to 65535.
int breakDownTime(std::int64_t seconds, CalendarTime* time);

// The reverse. `dayOfWeek` and `milliseconds` don't count; days, hours, minutes and seconds beyond
// their usual range carry over (February 30 is March 1 or 2). The result is -1 if `time` is null or
// has no month from 1 to 12.
std::int64_t calendarSeconds(const CalendarTime* time);

// 1 if `year` has a February 29, 0 if not.
int isLeapYear(int year);

}  // namespace vek::os
