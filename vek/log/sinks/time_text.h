// The texts of a message's time in log lines. Breaking a time down and formatting it costs several
// times what the rest of a line does, and most lines are written within the second of the line
// ahead of them: so each thread keeps the last text of each kind.
#pragma once

#include <cstdint>
#include <string_view>

namespace vek::log {

// The local time at `seconds` since 1970, as "2024-02-29 13:05:09". Good until the next call on
// this thread. A time zone that changes takes effect with the next second. Throws nothing but
// std::bad_alloc. Stands on time::DateTime.
std::string_view dateText(std::int64_t seconds);

// The same in the way of strftime's "%c".
std::string_view localTimeText(std::int64_t seconds);

}  // namespace vek::log
