// vek::log::Logger: a named source of log messages, with the level that its statements test.
//
// Statements are written with VEK_LOG (see statement.h), which tests the level. The operations here
// don't: who calls them has decided that the message is wanted.
#pragma once

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <ostream>
#include <sstream>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/log/level.h"
#include "vek/log/message.h"
#include "vek/thread/mutex.h"

namespace vek::log {

class Manager;

// Made and owned by vek::log::Manager, and valid until that is shut down. Everything but setLevel
// and setPid is safe from any thread; statements on one logger take turns.
class Logger : public NoCopy {
  public:
    // For the manager. Starts out following the default level, which is `initialLevel`.
    Logger(Manager& owner, std::string loggerName, Level initialLevel, std::uint32_t processId);

    // The category of this logger's messages.
    const std::string& name() const { return ownName; }

    // Read without a lock: a change made at the same moment may be seen one statement late.
    Level level() const { return currentLevel.load(std::memory_order_relaxed); }

    // Whether `level` is the manager's default level and changes with it.
    bool usesDefault() const { return followsDefault.load(std::memory_order_relaxed); }

    // For the manager and its configurator, under the manager's mutex. To change a level use
    // Manager::setLoggerLevel.
    void setLevel(Level newLevel, bool followDefault);
    void setPid(std::uint32_t processId) { pid.store(processId, std::memory_order_relaxed); }

    // --- the steps of a statement ---

    // Locks this logger and gives its stream, emptied and in a good state. Owed: one
    // `releaseStream`, unless this throws. What a statement sets of the stream's format, as by
    // std::hex, deliberately stays for the statements behind it. Throws OsError with code 1131
    // (ERROR_POSSIBLE_DEADLOCK) if this thread holds the lock already, as in a statement within a
    // statement on the same logger.
    std::ostream& stream();

    // A copy of what the stream holds. For the thread that holds the lock.
    std::string streamText() const { return buffer.str(); }

    // Unlocks this logger. For the thread that holds the lock.
    void releaseStream() { lock.unlock(); }

    // --- messages ---

    // Makes a message of `text` and submits it: waits while the manager's queue is full. Throws
    // UsageError, "log manager: received null message", if memory is exhausted.
    void emit(Level messageLevel, std::string text);

    // The same with a text that is formatted as by vek::format, or by vek::formatv from the
    // arguments of a caller that has its own "...". Deliberately unlike `emit`, these lose the
    // message in silence if memory is exhausted.
    void logf(Level messageLevel, const char* pattern, ...);
    void logfv(Level messageLevel, const char* pattern, std::va_list arguments);

    // New messages of this logger, stamped with this thread and this moment. The caller owns them
    // until it submits them. Null if memory is exhausted; throw nothing.
    Message* makeMessage(Level messageLevel, std::string text) const;
    Message* makeMessagef(Level messageLevel, const char* pattern, ...) const;
    Message* makeMessagefv(Level messageLevel, const char* pattern, std::va_list arguments) const;

    // The same with attributes, none as yet: fill in `attrs` ahead of submitting.
    AttrMessage* makeAttrMessage(Level messageLevel, std::string text) const;
    AttrMessage* makeAttrMessagef(Level messageLevel, const char* pattern, ...) const;
    AttrMessage* makeAttrMessagefv(Level messageLevel, const char* pattern,
                                   std::va_list arguments) const;

    // Passes `message` on to Manager::submit, and with it the ownership.
    void submit(Message* message);

  private:
    template <class Made>
    Made* make(Level messageLevel, std::string& text) const;
    template <class Made>
    Made* makef(Level messageLevel, const char* pattern, std::va_list arguments) const;

    Manager* const manager;
    const std::string ownName;
    // These three are written under the manager's mutex, and read without.
    std::atomic<bool> followsDefault = true;
    std::atomic<Level> currentLevel;
    std::atomic<std::uint32_t> pid;
    // Keeps its memory from one statement to the next.
    std::stringbuf buffer{std::ios_base::out};
    std::ostream out{&buffer};
    thread::Mutex lock{true};
};

}  // namespace vek::log
