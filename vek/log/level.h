// The level scale of the log, and its names.
#pragma once

#include <cstdint>
#include <string>

namespace vek::log {

// A higher number is more verbose. A logger passes a statement when the logger's level is at least
// the statement's; a sink takes a message when the message's level is at most the sink's.
enum Level : std::int32_t {
    OFF = 0,  // for loggers: no statement passes. Not for statements.
    ERR = 1,
    WARN = 2,
    INFO = 3,
    DEBUG = 4,
    TRACE = 5,
    DEFAULT = 6,  // not a severity: the logger follows the default level
    INVALID = 7,  // not a severity: a sink at this level takes every message
};

// Returns the name of `level` in upper case, as "WARN", in static storage. Undefined for values
// other than the eight above. Thread-safe, also before main.
const char* levelName(Level level);

// Returns the level that `text` names, in any case and with any white space around it. Throws
// UsageError for anything else, including "INVALID": "Invalid LEVEL string " and `text`, unchanged,
// in double quotes. Thread-safe.
Level parseLevel(const std::string& text);

}  // namespace vek::log
