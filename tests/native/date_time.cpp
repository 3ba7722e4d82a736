// The local time for the machine that builds, in place of vek/time/date_time.cpp.
#include "vek/time/date_time.h"

#include <ctime>

#include "vek/os/calendar.h"

namespace vek::time {

void DateTime::setLocalFromSeconds(std::int64_t seconds) {
    // The years of a file time.
    constexpr int firstYear = 1601;
    constexpr int lastYear = 30827;
    const std::time_t moment = seconds;
    std::tm local = {};
    if (localtime_r(&moment, &local) == nullptr || local.tm_year < firstYear - 1900 ||
        local.tm_year > lastYear - 1900) {
        return;
    }
    fromTm(local);
    milliseconds = 0;
    utc = false;
}

void DateTime::normalise() {
    os::CalendarTime date = {year, month, 0, day, hour, minute, second, 0};
    const bool sound =
        month >= 1 && month <= 12 && day >= 1 && day <= 31 && hour < 24 && minute < 60;
    if (!utc && sound && os::breakDownTime(os::calendarSeconds(&date), &date) == 1) {
        dayOfWeek = date.dayOfWeek;
    }
}

}  // namespace vek::time
