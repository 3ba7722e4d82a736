#include "vek/os/calendar.h"

#include <array>

namespace vek::os {

namespace {

constexpr std::int64_t secondsPerMinute = 60;
constexpr std::int64_t secondsPerHour = 3600;
constexpr std::int64_t secondsPerDay = 86400;
constexpr std::int64_t lastYear = 65535;

// The days before each month in a year that isn't a leap year; the last is the whole year.
constexpr std::array<int, 13> daysBeforeMonth = {0,   31,  59,  90,  120, 151, 181,
                                                 212, 243, 273, 304, 334, 365};

int daysBefore(int year, int month) {
    const int leapDay = month > 2 ? isLeapYear(year) : 0;
    return daysBeforeMonth[static_cast<std::size_t>(month - 1)] + leapDay;
}

// Days from 1970-01-01 to the first day of `year`, which is negative for the years before.
std::int64_t daysBeforeYear(std::int64_t year) {
    // Leap days from the year 0 on; that year is a leap year itself.
    const auto leapDays = [](std::int64_t before) {
        return before == 0 ? 0 : (before - 1) / 4 - (before - 1) / 100 + (before - 1) / 400 + 1;
    };
    return (year - 1970) * 365 + leapDays(year) - leapDays(1970);
}

}  // namespace

int breakDownTime(std::int64_t seconds, CalendarTime* time) {
    if (time == nullptr || seconds < daysBeforeYear(0) * secondsPerDay ||
        seconds >= daysBeforeYear(lastYear + 1) * secondsPerDay) {
        return 0;
    }
    // Rounded down, also before 1970.
    std::int64_t days = seconds / secondsPerDay;
    std::int64_t rest = seconds % secondsPerDay;
    if (rest < 0) {
        rest += secondsPerDay;
        --days;
    }
    const std::int64_t daysFromYear0 = days - daysBeforeYear(0);
    // At most one year too early: 400 years of 366 days are less than a year longer than a cycle.
    std::int64_t year =
        daysFromYear0 / daysPerCycle * yearsPerCycle + daysFromYear0 % daysPerCycle / 366;
    if (daysBeforeYear(year + 1) <= days) {
        ++year;
    }
    int month = 12;
    const auto dayOfYear = static_cast<int>(days - daysBeforeYear(year));
    while (daysBefore(static_cast<int>(year), month) > dayOfYear) {
        --month;
    }
    const int day = dayOfYear - daysBefore(static_cast<int>(year), month) + 1;
    time->year = static_cast<std::uint16_t>(year);
    time->month = static_cast<std::uint16_t>(month);
    // 1970-01-01 was a Thursday.
    time->dayOfWeek = static_cast<std::uint16_t>(((days + 4) % 7 + 7) % 7);
    time->day = static_cast<std::uint16_t>(day);
    time->hour = static_cast<std::uint16_t>(rest / secondsPerHour);
    time->minute = static_cast<std::uint16_t>(rest % secondsPerHour / secondsPerMinute);
    time->second = static_cast<std::uint16_t>(rest % secondsPerMinute);
    time->milliseconds = 0;
    return 1;
}

std::int64_t calendarSeconds(const CalendarTime* time) {
    if (time == nullptr || time->month < 1 || time->month > 12) {
        return -1;
    }
    const std::int64_t days =
        daysBeforeYear(time->year) + daysBefore(time->year, time->month) + time->day - 1;
    return days * secondsPerDay + time->hour * secondsPerHour + time->minute * secondsPerMinute +
           time->second;
}

int isLeapYear(int year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0) ? 1 : 0;
}

}  // namespace vek::os
