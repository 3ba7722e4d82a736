// log_application::LevelChange: the level that a logger is to get, as the user writes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "vek/log/level.h"

namespace log_application {

// The most that a process takes as a request, in bytes, and what that leaves for a logger's name.
inline constexpr std::size_t longestRequest = 1020;
inline constexpr std::size_t longestLoggerName = 990;

struct LevelChange {
    std::string logger;
    vek::log::Level level;  // DEFAULT: to follow the default level
};

// Reads "NAME=LEVEL"; the name may hold blanks. Throws Failure (wrong usage) for a text without
// both, a level that is none, and a name that the wire can't carry.
LevelChange parseLevelChange(const std::string& text);

// A level from "OFF" to "TRACE", in any case; `option` is what it was given to. Throws Failure
// (wrong usage), also for "DEFAULT".
vek::log::Level parseSeverity(const std::string& option, const std::string& text);

// A time as "10m", "90s" or "1500ms", in milliseconds; a bare number counts seconds. `option` is
// what it was given to. Throws Failure (wrong usage) for anything else, for 0 and for more than a
// year.
std::int64_t parseTime(const std::string& option, const std::string& text);

}  // namespace log_application
