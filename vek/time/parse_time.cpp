#include "vek/time/parse_time.h"

#include <iomanip>
#include <locale>
#include <sstream>
#include <stdexcept>

#include <time.h>

#include "vek/exception.h"

namespace vek::time {

namespace {

// Some runtimes know the locale "C" only, and throw if the environment names another.
std::locale environmentLocale() {
    try {
        return std::locale("");
    } catch (const std::runtime_error&) {
        return std::locale::classic();
    }
}

// Appended to the text, so that the format doesn't match an incomplete text. At the end of a
// stream, some runtimes would accept the text as complete.
constexpr char textEnd = '\0';

constexpr char space[] = " \t\n\v\f\r";

bool isBlank(const std::string& text) {
    return text.find_first_not_of(space) == std::string::npos;
}

// White space in a format matches none, too, also at its end.
std::string withoutTrailingSpace(const std::string& format) {
    return format.substr(0, format.find_last_not_of(space) + 1);
}

// Only for what it does to `broken`.
void bringIntoRange(std::tm& broken) {
#ifdef _WIN32
    // The 64-bit form goes beyond 2038.
    _mktime64(&broken);
#else
    std::mktime(&broken);
#endif
}

}  // namespace

DateTime parseTime(const char* format, const std::string& text) {
    std::istringstream stream(isBlank(text) ? text : text + textEnd);
    stream.imbue(environmentLocale());
    std::tm broken = {};
    stream >> std::get_time(&broken, withoutTrailingSpace(format).c_str());
    if (stream.fail()) {
        throw ParseError(text,
                         std::string("Could not parse time using format string '") + format + "'");
    }
    bringIntoRange(broken);
    DateTime date;
    date.fromTm(broken);
    return date;
}

}  // namespace vek::time
