// vek::log::Logger: a named source of log messages, with the level that its statements test.
#pragma once

#include <ostream>
#include <sstream>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/log/level.h"
#include "vek/thread/mutex.h"

namespace vek::log {

// Made and owned by vek::log::Manager. Statements may be made from any thread; those on one logger
// take turns.
class Logger : public NoCopy {
  public:
    Logger(std::string loggerName, Level initialLevel);

    const std::string& name() const { return ownName; }

    // Read without a lock: a change made at the same moment may be seen one statement late.
    Level level() const { return currentLevel; }

    // Sets the level of this logger's statements.
    void setLevel(Level newLevel) { currentLevel = newLevel; }

    // Locks this logger and gives its stream, emptied and in a good state. Owed: one
    // `releaseStream`, unless this throws. Throws OsError with code 1131 if this thread holds the
    // lock already, as in a statement within a statement on the same logger.
    std::ostream& stream();

    // What the stream holds. For the thread that holds the lock.
    std::string streamText() const { return buffer.str(); }

    // Posts one message of `messageLevel`. No sink exists that could take it yet.
    void emit(Level messageLevel, const std::string& text);

    // Unlocks this logger. For the thread that holds the lock.
    void releaseStream() { lock.unlock(); }

  private:
    const std::string ownName;
    Level currentLevel;
    std::stringbuf buffer{std::ios_base::out};
    std::ostream out{&buffer};
    thread::Mutex lock{true};
};

}  // namespace vek::log
