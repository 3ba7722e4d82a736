// The level scale of the log, and its names.
#pragma once

#include <cstdint>
#include <string>

namespace vek::log {

// A higher number is more verbose. A logger passes a statement when the logger's level is at least
// the statement's; a sink takes a message when the message's level is at most the sink's.
enum Level : std::int32_t {
    OFF = 0,  // for loggers: none of their statements passes. No statement is of this level.
    ERR = 1,
    WARN = 2,
    INFO = 3,
    DEBUG = 4,
    TRACE = 5,
    DEFAULT = 6,  // no severity: the logger follows the default level
    INVALID = 7,  // no severity: a sink at this level takes every message
};

// The name of `level` in upper case, as "WARN", for each of the eight; it lives for ever. Not
// checked: any other value must not be given. Safe from any thread, also ahead of main.
const char* levelName(Level level);

// The level that `text` names, in any case and with white space around it. Throws UsageError for
// anything else, "INVALID" included: "Invalid LEVEL string ", and `text` in double quotes as it was
// given.
Level parseLevel(const std::string& text);

}  // namespace vek::log
