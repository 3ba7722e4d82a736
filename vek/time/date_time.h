// vek::time::DateTime: a calendar date and time of day, in local time or UTC.
#pragma once

#include <cstdint>
#include <ctime>
#include <iosfwd>
#include <string>

namespace vek::time {

// A plain value, safe from any thread on separate objects. Nothing checks the fields: whoever sets
// them answers for them. No operation throws anything but std::bad_alloc.
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

    // Takes the present time, local or UTC, and sets `utc` accordingly. Stand on GetLocalTime and
    // GetSystemTime.
    void setLocalNow();
    void setUtcNow();

    // Takes the local time of the moment `seconds` after 1970-01-01 00:00 UTC and clears `utc`. A
    // moment that the system can't convert leaves the object as it is. Stands on
    // FileTimeToSystemTime and SystemTimeToTzSpecificLocalTime with the machine's time zone.
    void setLocalFromSeconds(std::int64_t seconds);

    // Seconds since 1970-01-01 00:00 UTC, cut to whole ones; 0 for a date that the system can't
    // convert. Stands on TzSpecificLocalTimeToSystemTime, unless `utc`, and SystemTimeToFileTime.
    std::int64_t toSeconds() const;

    // Puts the day of the week right. A bad date stays as it is, and so does one in UTC. Stands on
    // SystemTimeToFileTime and FileTimeToSystemTime.
    void normalise();

    // Fills `broken` but for its tm_yday, and its tm_isdst unless `utc`, which makes that 0.
    void toTm(std::tm& broken) const;
    // Takes all fields but `milliseconds` and `utc`, which stay, from `broken`.
    void fromTm(const std::tm& broken);

    // The normalised date, formatted by strftime with `format`. A result that doesn't fit into 256
    // characters with its end gives an empty string. The day of the year isn't known: "%j" gives
    // "001".
    std::string format(const char* format) const;
    // The same with "%c".
    std::string toString() const;

    // The year is one of the Gregorian calendar with a 29th of February.
    bool isLeapYear() const;

    // All of the fields of SYSTEMTIME are 0.
    bool isNull() const;
};

// Writes what toString gives.
std::ostream& operator<<(std::ostream& stream, const DateTime& date);

}  // namespace vek::time
