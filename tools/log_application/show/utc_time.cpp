#include "tools/log_application/show/utc_time.h"

#include "vek/base/format.h"

namespace log_application {

namespace {

constexpr std::int64_t millisecondsPerDay = 86'400'000;
constexpr std::int64_t daysPerEra = 146'097;  // 400 years

struct Date {
    std::int64_t year;
    int month;
    int day;
};

// Counts in years that begin in March: a leap year's extra day is then the last of the year.
Date dateOfDay(std::int64_t daysSince1970) {
    const std::int64_t days = daysSince1970 + 719'468;  // since 0000-03-01
    const std::int64_t era = (days >= 0 ? days : days - daysPerEra + 1) / daysPerEra;
    const std::int64_t dayOfEra = days - era * daysPerEra;
    const std::int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    const auto day = static_cast<int>(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1);
    const auto month =
        static_cast<int>(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
    return {yearOfEra + era * 400 + (month <= 2 ? 1 : 0), month, day};
}

std::string yearText(std::int64_t year) {
    if (year >= 0 && year <= 9999) {
        return vek::format("%04d", static_cast<int>(year));
    }
    return vek::format(year < 0 ? "-%04lld" : "+%lld",
                       static_cast<long long>(year < 0 ? -year : year));
}

}  // namespace

std::string isoUtc(std::int64_t milliseconds) {
    std::int64_t days = milliseconds / millisecondsPerDay;
    std::int64_t rest = milliseconds % millisecondsPerDay;
    if (rest < 0) {
        rest += millisecondsPerDay;
        --days;
    }
    const Date date = dateOfDay(days);
    const auto ofDay = static_cast<int>(rest);
    return yearText(date.year) + vek::format("-%02d-%02dT%02d:%02d:%02d.%03dZ", date.month,
                                             date.day, ofDay / 3'600'000, ofDay / 60'000 % 60,
                                             ofDay / 1000 % 60, ofDay % 1000);
}

}  // namespace log_application
