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

// Streams `expression` into `logger_` (a vek::log::Logger&) and posts the text at `level_`, if the
// logger lets that level through; otherwise `expression` is not evaluated, and the cost is one load
// and one comparison. Throws what Logger::stream and the expression throw.
#define VEK_LOG(logger_, level_, expression)                          \
    do {                                                              \
        ::vek::log::Logger& vekLogger = (logger_);                    \
        if (vekLogger.level() >= (level_)) {                          \
            ::std::ostream& vekLogStream = vekLogger.stream();        \
            const ::vek::log::StreamRelease vekLogRelease(vekLogger); \
            vekLogStream << expression;                               \
            vekLogger.emit((level_), vekLogger.streamText());         \
        }                                                             \
    } while (false)
