#include "vek/time/date_time.h"

#include "vek/base/windows.h"
#include "vek/time/clock_source.h"

namespace vek::time {

namespace {

constexpr std::int64_t millisecondsPerSecond = 1000;

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

}  // namespace vek::time
