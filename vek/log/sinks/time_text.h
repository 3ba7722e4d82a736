// The texts of a message's time in log lines. Formatting a time costs several times as much as the
// rest of a line, and most lines are of the same second as the previous one: so each thread keeps
// the last text of each kind.
#pragma once

#include <cstdint>
#include <string_view>

namespace vek::log {

// Returns the local time at `seconds` since 1970, as "2024-02-29 13:05:09". Valid until the next
// call on this thread. A change of the time zone takes effect at the next second. Throws nothing
// but std::bad_alloc. Calls time::DateTime::format.
std::string_view dateText(std::int64_t seconds);

// The same as strftime's "%c".
std::string_view localTimeText(std::int64_t seconds);

}  // namespace vek::log
