#include "tools/log_application/show/utc_time.h"

#include "vek/base/format.h"
#include "vek/os/calendar.h"

namespace log_application {

namespace {

constexpr std::int64_t secondsPerCycle = vek::os::daysPerCycle * 86'400;

std::string yearText(std::int64_t year) {
    if (year >= 0 && year <= 9999) {
        return vek::format("%04d", static_cast<int>(year));
    }
    return vek::format(year < 0 ? "-%04lld" : "+%lld",
                       static_cast<long long>(year < 0 ? -year : year));
}

}  // namespace

std::string isoUtc(std::int64_t milliseconds) {
    std::int64_t seconds = milliseconds / 1000;
    std::int64_t rest = milliseconds % 1000;
    if (rest < 0) {
        rest += 1000;
        --seconds;
    }
    // breakDownTime takes the years of 16 bits only: it gets the same time of the cycle from 1970
    // on.
    std::int64_t cycles = seconds / secondsPerCycle;
    seconds %= secondsPerCycle;
    if (seconds < 0) {
        seconds += secondsPerCycle;
        --cycles;
    }
    vek::os::CalendarTime date = {};
    vek::os::breakDownTime(seconds, &date);
    return yearText(date.year + cycles * vek::os::yearsPerCycle) +
           vek::format("-%02d-%02dT%02d:%02d:%02d.%03dZ", date.month, date.day, date.hour,
                       date.minute, date.second, static_cast<int>(rest));
}

}  // namespace log_application
