// The part of DateTime that asks the system for nothing.
#include <array>
#include <ostream>

#include "vek/base/compiler.h"
#include "vek/os/calendar.h"
#include "vek/time/date_time.h"

namespace vek::time {

namespace {

constexpr std::size_t maxFormatted = 256;

}  // namespace

void DateTime::toTm(std::tm& broken) const {
    broken.tm_sec = second;
    broken.tm_min = minute;
    broken.tm_hour = hour;
    broken.tm_mday = day;
    broken.tm_mon = month - 1;
    broken.tm_year = year - 1900;
    broken.tm_wday = dayOfWeek;
    if (utc) {
        broken.tm_isdst = 0;
    }
}

void DateTime::fromTm(const std::tm& broken) {
    // Unsigned, so that a hostile number wraps.
    year = static_cast<std::uint16_t>(1900u + static_cast<unsigned>(broken.tm_year));
    month = static_cast<std::uint16_t>(1u + static_cast<unsigned>(broken.tm_mon));
    dayOfWeek = static_cast<std::uint16_t>(broken.tm_wday);
    day = static_cast<std::uint16_t>(broken.tm_mday);
    hour = static_cast<std::uint16_t>(broken.tm_hour);
    minute = static_cast<std::uint16_t>(broken.tm_min);
    second = static_cast<std::uint16_t>(broken.tm_sec);
}

std::string DateTime::format(const char* format) const {
    DateTime date = *this;
    date.normalise();
    std::tm broken = {};
    date.toTm(broken);
    std::array<char, maxFormatted> buffer;
    // The runtime may refuse the format, or fields that are out of range.
    const QuietRuntimeErrors quiet;
    return std::string(buffer.data(), std::strftime(buffer.data(), buffer.size(), format, &broken));
}

std::string DateTime::toString() const {
    return format("%c");
}

bool DateTime::isLeapYear() const {
    return os::isLeapYear(year) != 0;
}

bool DateTime::isNull() const {
    return year == 0 && month == 0 && dayOfWeek == 0 && day == 0 && hour == 0 && minute == 0 &&
           second == 0 && milliseconds == 0;
}

std::ostream& operator<<(std::ostream& stream, const DateTime& date) {
    return stream << date.toString();
}

}  // namespace vek::time
