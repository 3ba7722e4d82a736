// The level scale of the log.
#pragma once

#include <cstdint>

namespace vek::log {

// A higher number is more verbose. A logger passes a statement when the logger's level is at least
// the statement's; a sink takes a message when the message's level is at most the sink's.
enum Level : std::int32_t {
    OFF = 0,
    ERR = 1,
    WARN = 2,
    INFO = 3,
    DEBUG = 4,
    TRACE = 5,
    DEFAULT = 6,  // no severity: the logger follows the default level
    INVALID = 7,  // no severity: a sink at this level takes every message
};

}  // namespace vek::log
