// vek::time::DateTime: a calendar date and time of day, in local time or UTC.
#pragma once

#include <cstdint>
#include <ctime>
#include <iosfwd>
#include <string>

namespace vek::time {

// A plain value, thread-safe on separate objects. The fields are not checked. No operation throws
// anything but std::bad_alloc.
class DateTime {
  public:
    // The fields, in the order of the system's SYSTEMTIME.
    std::uint16_t year = 0;
    std::uint16_t month = 0;      // 1 to 12
    std::uint16_t dayOfWeek = 0;  // 0 is Sunday
    std::uint16_t day = 0;        // 1 to 31
    std::uint16_t hour = 0;
    std::uint16_t minute = 0;
    std::uint16_t second = 0;
    std::uint16_t milliseconds = 0;
    // The fields are UTC, not local time.
    bool utc = false;

    // Set the current time, local or UTC, and set `utc` accordingly. Call GetLocalTime and
    // GetSystemTime.
    void setLocalNow();
    void setUtcNow();

    // Sets the local time `seconds` after 1970-01-01 00:00 UTC and clears `utc`. The object isn't
    // changed if the system can't convert the time, which it can from 1601 to 30827. Seconds that
    // are no file time (before 1601 or after 60055, INT64_MAX among them) wrap first: some give
    // another date instead of none. Calls FileTimeToSystemTime and SystemTimeToTzSpecificLocalTime
    // with the machine's time zone.
    void setLocalFromSeconds(std::int64_t seconds);

    // Returns the seconds since 1970-01-01 00:00 UTC, truncated; 0 for a date that the system can't
    // convert. Calls TzSpecificLocalTimeToSystemTime, unless `utc`, and SystemTimeToFileTime.
    std::int64_t toSeconds() const;

    // Corrects the day of the week. An invalid date isn't changed, nor is one in UTC. Calls
    // SystemTimeToFileTime and FileTimeToSystemTime.
    void normalise();

    // Fills `broken`, except tm_yday. Sets tm_isdst to 0 if `utc`, else doesn't change it.
    void toTm(std::tm& broken) const;
    // Sets all fields but `milliseconds` and `utc` from `broken`.
    void fromTm(const std::tm& broken);

    // Normalises a copy and formats it by strftime with `format`. Returns an empty string if the
    // result and its terminator take more than 256 characters, and for a format or fields that the
    // runtime refuses. The day of the year isn't known: "%j" gives "001".
    std::string format(const char* format) const;
    // The same with "%c".
    std::string toString() const;

    // Returns whether `year` has a February 29, by the Gregorian rule.
    bool isLeapYear() const;

    // Returns whether all fields of SYSTEMTIME are 0.
    bool isNull() const;
};

// Writes the result of toString.
std::ostream& operator<<(std::ostream& stream, const DateTime& date);

}  // namespace vek::time
