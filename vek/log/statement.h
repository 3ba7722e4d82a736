// The logging statement: VEK_LOG(logger, vek::log::DEBUG, "text " << value).
#pragma once

#include "vek/log/logger.h"

namespace vek::log {

// Unlocks a logger at the end of a statement, also if its expression throws.
class VEK_SCOPED_CAPABILITY StreamRelease {
  public:
    explicit StreamRelease(Logger& locked) VEK_REQUIRES(locked.lock) : logger(locked) {}
    ~StreamRelease() VEK_RELEASE() { logger.releaseStream(); }
    StreamRelease(const StreamRelease&) = delete;
    StreamRelease& operator=(const StreamRelease&) = delete;

  private:
    Logger& logger;
};

}  // namespace vek::log

// Streams the expression, which is all that follows `level_`, into `logger_` (a vek::log::Logger&)
// and submits the text at `level_` (any but OFF) if the logger passes that level. Otherwise the
// expression is not evaluated, and the cost is one load and one comparison. `logger_` and `level_`
// are evaluated once. Blocks, with the logger locked, while the manager's queue is full. Throws
// what Logger::stream, the expression and Logger::emit throw, and unlocks the logger then.
//
// The names below must not occur in `logger_`: a variable would refer to itself.
#define VEK_LOG(logger_, level_, ...)                                                        \
    do {                                                                                     \
        ::vek::log::Logger& vekLogStatementLogger_ = (logger_);                              \
        const ::vek::log::Level vekLogStatementLevel_ = (level_);                            \
        if (vekLogStatementLogger_.passes(vekLogStatementLevel_)) {                          \
            ::std::ostream& vekLogStatementStream_ = vekLogStatementLogger_.stream();        \
            const ::vek::log::StreamRelease vekLogStatementRelease_(vekLogStatementLogger_); \
            vekLogStatementStream_ << __VA_ARGS__;                                           \
            vekLogStatementLogger_.emitStream(vekLogStatementLevel_);                        \
        }                                                                                    \
    } while (false)
