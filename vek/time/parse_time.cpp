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
    std::istringstream stream(text);
    stream.imbue(environmentLocale());
    std::tm broken = {};
    stream >> std::get_time(&broken, format);
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
