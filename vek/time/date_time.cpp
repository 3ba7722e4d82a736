#include "vek/time/date_time.h"

#include <array>
#include <ostream>

#include "vek/base/windows.h"
#include "vek/time/clock_source.h"

namespace vek::time {

namespace {

constexpr std::int64_t millisecondsPerSecond = 1000;
constexpr std::size_t maxFormatted = 256;

SYSTEMTIME toSystemTime(const DateTime& date) {
    return {.wYear = date.year,
            .wMonth = date.month,
            .wDayOfWeek = date.dayOfWeek,
            .wDay = date.day,
            .wHour = date.hour,
            .wMinute = date.minute,
            .wSecond = date.second,
            .wMilliseconds = date.milliseconds};
}

void takeSystemTime(DateTime& date, const SYSTEMTIME& from) {
    date.year = from.wYear;
    date.month = from.wMonth;
    date.dayOfWeek = from.wDayOfWeek;
    date.day = from.wDay;
    date.hour = from.wHour;
    date.minute = from.wMinute;
    date.second = from.wSecond;
    date.milliseconds = from.wMilliseconds;
}

}  // namespace

void DateTime::setLocalNow() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    takeSystemTime(*this, now);
    utc = false;
}

void DateTime::setUtcNow() {
    SYSTEMTIME now;
    GetSystemTime(&now);
    takeSystemTime(*this, now);
    utc = true;
}

void DateTime::setLocalFromSeconds(std::int64_t seconds) {
    // Unsigned, so that a hostile number wraps.
    const std::uint64_t unixMs = static_cast<std::uint64_t>(seconds) * millisecondsPerSecond;
    const FILETIME fileTime = unixToFileTime(static_cast<std::int64_t>(unixMs));
    SYSTEMTIME universal;
    SYSTEMTIME local;
    if (FileTimeToSystemTime(&fileTime, &universal) == 0 ||
        SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local) == 0) {
        return;
    }
    takeSystemTime(*this, local);
    utc = false;
}

std::int64_t DateTime::toSeconds() const {
    SYSTEMTIME universal = toSystemTime(*this);
    if (!utc) {
        SYSTEMTIME local = universal;
        if (TzSpecificLocalTimeToSystemTime(nullptr, &local, &universal) == 0) {
            return 0;
        }
    }
    FILETIME fileTime;
    if (SystemTimeToFileTime(&universal, &fileTime) == 0) {
        return 0;
    }
    return fileTimeToUnix(fileTime) / millisecondsPerSecond;
}

void DateTime::normalise() {
    if (utc) {
        return;
    }
    SYSTEMTIME broken = toSystemTime(*this);
    FILETIME fileTime;
    if (SystemTimeToFileTime(&broken, &fileTime) != 0 &&
        FileTimeToSystemTime(&fileTime, &broken) != 0) {
        takeSystemTime(*this, broken);
    }
}

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
    return std::string(buffer.data(), std::strftime(buffer.data(), buffer.size(), format, &broken));
}

std::string DateTime::toString() const {
    return format("%c");
}

bool DateTime::isLeapYear() const {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

bool DateTime::isNull() const {
    return year == 0 && month == 0 && dayOfWeek == 0 && day == 0 && hour == 0 && minute == 0 &&
           second == 0 && milliseconds == 0;
}

std::ostream& operator<<(std::ostream& stream, const DateTime& date) {
    return stream << date.toString();
}

}  // namespace vek::time
