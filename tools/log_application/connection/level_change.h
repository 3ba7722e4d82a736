// log_application::LevelChange: the new level of a logger; parsing of what the user writes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "vek/log/level.h"

namespace log_application {

// The size limit of a request, in bytes, and that of a logger's name within it.
inline constexpr std::size_t longestRequest = 1020;
inline constexpr std::size_t longestLoggerName = 990;

struct LevelChange {
    std::string logger;
    vek::log::Level level;  // DEFAULT: the logger follows the default level
};

// Parses "NAME=LEVEL"; the name may hold blanks. Throws Failure (exitUsage) if one of the two is
// missing, the level is unknown, or the protocol can't carry the name.
LevelChange parseLevelChange(const std::string& text);

// Parses a level from "OFF" to "TRACE", in any case, the value of the option `option`. Throws
// Failure (exitUsage) for anything else, "DEFAULT" included.
vek::log::Level parseSeverity(const std::string& option, const std::string& text);

// Parses a duration such as "10m", "90s" or "1500ms", the value of the option `option`; a bare
// number counts seconds. Returns milliseconds. Throws Failure (exitUsage) for anything else, for 0
// and for more than a year.
std::int64_t parseTime(const std::string& option, const std::string& text);

}  // namespace log_application
