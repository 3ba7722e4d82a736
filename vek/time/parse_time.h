// Parsing a date.
#pragma once

#include <string>

#include "vek/time/date_time.h"

namespace vek::time {

// Parses `text` with `format`, a format of std::get_time ("%Y-%m-%d %H:%M:%S"), in the
// environment's locale, or in the classic one if the runtime doesn't have that. Text after the part
// that the format covers is ignored. Fields that the format doesn't name have the values of a
// zeroed std::tm: the year 1900, January, and the day 0. Then all fields are brought into their
// ranges (February 30 is March 1 or 2), as standard time of the machine's time zone, and the day of
// the week is filled in. A date that the C runtime can't convert (before 1970 or after 3000) is
// returned as it was parsed.
//
// Throws ParseError, whose input is `text`, if the text doesn't match the format or ends before the
// format does; only white space at the end of the format may be missing. Thread-safe.
DateTime parseTime(const char* format, const std::string& text);

}  // namespace vek::time
