// Reading a date from text.
#pragma once

#include <string>

#include "vek/time/date_time.h"

namespace vek::time {

// Reads `text` by `format`, which is that of std::get_time ("%Y-%m-%d %H:%M:%S"), under the
// environment's locale, or the classic one if the runtime lacks that. What follows the part that
// the format covers is not looked at, and with some runtimes a text may end early, right behind a
// number. Fields that the format doesn't name are those of a zeroed
// std::tm: the year 1900, January, and the day before the first. Then all are brought into their
// ranges, as standard time of the machine's time zone, and the day of the week is filled in. A date
// that the C runtime can't count to is taken as it was read, without that.
//
// Throws ParseError, whose input is `text`, if the text doesn't match. Safe from any thread.
DateTime parseTime(const char* format, const std::string& text);

}  // namespace vek::time
