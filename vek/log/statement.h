// The logging statement: VEK_LOG(logger, vek::log::DEBUG, "text " << value).
#pragma once

#include "vek/log/logger.h"

namespace vek::log {

// Unlocks a logger at the end of a statement, also when the statement's expression throws.
class StreamRelease {
  public:
    explicit StreamRelease(Logger& locked) : logger(locked) {}
    ~StreamRelease() { logger.releaseStream(); }
    StreamRelease(const StreamRelease&) = delete;
    StreamRelease& operator=(const StreamRelease&) = delete;

  private:
    Logger& logger;
};

}  // namespace vek::log

// Streams the expression, which is all that follows `level_`, into `logger_` (a vek::log::Logger&)
// and posts the text at `level_` (any but OFF), if the logger lets that level through; otherwise
// the expression is not evaluated, and the cost is one load and one comparison. Waits while the
// manager's queue is full, with the logger locked. Throws what Logger::stream, the expression and
// Logger::emit throw; the logger is unlocked then.
#define VEK_LOG(logger_, level_, ...)                                 \
    do {                                                              \
        ::vek::log::Logger& vekLogger = (logger_);                    \
        if (vekLogger.level() >= (level_)) {                          \
            ::std::ostream& vekLogStream = vekLogger.stream();        \
            const ::vek::log::StreamRelease vekLogRelease(vekLogger); \
            vekLogStream << __VA_ARGS__;                              \
            vekLogger.emit((level_), vekLogger.streamText());         \
        }                                                             \
    } while (false)
