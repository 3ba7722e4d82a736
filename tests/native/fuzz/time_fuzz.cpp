// Times of messages and dates, whatever their numbers.
#include <iterator>

#include "tests/native/fuzz/fuzz.h"
#include "tools/log_application/show/utc_time.h"
#include "vek/exception.h"
#include "vek/log/sinks/time_text.h"
#include "vek/os/calendar.h"
#include "vek/time/clock.h"
#include "vek/time/parse_time.h"

namespace {

using vek::test::require;

void checkCalendar(std::int64_t seconds) {
    vek::os::CalendarTime date = {};
    if (vek::os::breakDownTime(seconds, &date) == 1) {
        require(vek::os::calendarSeconds(&date) == seconds, "a date is that of its seconds");
        const int days[] = {
            31, vek::os::isLeapYear(date.year) != 0 ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30,
            31};
        require(date.month >= 1 && date.month <= 12 && date.day >= 1 &&
                    date.day <= days[date.month - 1] && date.hour < 24 && date.minute < 60 &&
                    date.second < 60 && date.dayOfWeek < 7,
                "a date's fields are in their ranges");
    }
}

// Both calendars of this system are asked; beyond the years of one there is only the other.
void checkIso(std::int64_t milliseconds) {
    const std::string iso = log_application::isoUtc(milliseconds);
    require(iso.ends_with("Z") && iso.size() >= 24, "a time is written whole");
    std::int64_t seconds = milliseconds / 1000;
    if (milliseconds % 1000 < 0) {
        --seconds;
    }
    vek::os::CalendarTime date = {};
    if (vek::os::breakDownTime(seconds, &date) == 1 && date.year <= 9999) {
        char expected[64];
        std::snprintf(expected, sizeof expected, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", date.year,
                      date.month, date.day, date.hour, date.minute, date.second,
                      static_cast<int>(milliseconds - seconds * 1000));
        require(iso == expected, "a time is that of the calendar");
    }
}

void checkDate(FuzzedDataProvider& input) {
    vek::time::DateTime date;
    for (std::uint16_t* const field : {&date.year, &date.month, &date.dayOfWeek, &date.day,
                                       &date.hour, &date.minute, &date.second}) {
        *field = input.ConsumeIntegral<std::uint16_t>();
    }
    date.utc = input.ConsumeBool();
    std::tm broken = {};
    date.toTm(broken);
    vek::time::DateTime again;
    again.fromTm(broken);
    again.utc = date.utc;
    require(again.year == date.year && again.month == date.month && again.day == date.day &&
                again.hour == date.hour && again.minute == date.minute &&
                again.second == date.second && again.dayOfWeek == date.dayOfWeek,
            "a date is the same behind its broken form");
    require(date.format("%Y-%m-%d %H:%M:%S").size() < 256, "a date has a text");
}

void checkParsed(const std::string& text) {
    constexpr char format[] = "%Y-%m-%d %H:%M:%S";
    try {
        const vek::time::DateTime date = vek::time::parseTime(format, text);
        if (date.year >= 1970 && date.year <= 9999) {
            const std::string written = date.format(format);
            require(vek::time::parseTime(format, written).format(format) == written,
                    "a date is read as it is written");
        }
    } catch (const vek::ParseError& error) {
        require(error.input() == text, "an error names its text");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto time = input.ConsumeIntegral<std::int64_t>();
    const auto duration = input.ConsumeIntegral<std::int64_t>();
    checkCalendar(time);
    checkCalendar(time % 4'000'000'000'000);
    checkIso(time);
    checkIso(time % 400'000'000'000'000);
    vek::time::RealtimeClock clock(false);
    clock += time;
    clock += duration;
    clock -= duration;
    require(clock.getValue() == time, "a clock moves there and back");
    vek::log::dateText(time);
    vek::log::localTimeText(time % 1'000'000'000'000);
    checkDate(input);
    checkParsed(input.ConsumeRemainingBytesAsString());
    return 0;
}
