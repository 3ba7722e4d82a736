// vek::log::Logger: a named source of log messages, with the level that its statements test.
//
// Write statements with VEK_LOG (see statement.h), which tests the level. The operations here
// don't: their caller has decided that the message is wanted.
#pragma once

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

#include "vek/base/compiler.h"
#include "vek/base/no_copy.h"
#include "vek/log/level.h"
#include "vek/log/message.h"
#include "vek/log/queue/gate.h"
#include "vek/log/text_buffer.h"
#include "vek/thread/mutex.h"

namespace vek::log {

class Manager;

// Made and owned by vek::log::Manager, and valid until that is shut down. Thread-safe, except for
// the operations for the manager. Statements on one logger run one at a time.
class Logger : public NoCopy {
  public:
    // For the manager. The new logger follows the default level, which is `initialLevel`.
    Logger(Manager& owner, std::string loggerName, Level initialLevel, std::uint32_t processId);

    // The category of this logger's messages.
    const std::string& name() const { return ownName; }

    // The level that was set. Takes no lock.
    Level level() const { return currentLevel.load(std::memory_order_relaxed); }

    // Whether `level` is the manager's default level and changes with it. Takes no lock.
    bool usesDefault() const { return followsDefault.load(std::memory_order_relaxed); }

    // Whether a statement of `statementLevel` is written: `level` is at least that, and the logger
    // isn't muted. Takes no lock: a change made at the same moment may be seen one statement late.
    bool passes(Level statementLevel) const {
        return threshold.load(std::memory_order_relaxed) >= statementLevel;
    }

    // For the manager and its configurator, with the manager's mutex held. To change a level use
    // Manager::setLoggerLevel.
    void setLevel(Level newLevel, bool followDefault);
    void setPid(std::uint32_t processId) { pid.store(processId, std::memory_order_relaxed); }

    // For the manager, with its mutex held. A muted logger lets statements through as one at OFF
    // does, but keeps its level, which `level` returns and which can be changed.
    void setMuted(bool mute);

    // For the manager, with its mutex held: puts a logger from before a shutdown into the state of
    // a new one. It stays muted.
    void renew(Level initialLevel, std::uint32_t processId);

    // --- the steps of a statement ---

    // Locks this logger and returns its stream, emptied and in a good state. Call `releaseStream`
    // once afterwards, unless this throws. Format flags that a statement sets, as by std::hex,
    // deliberately stay for the next statements. Throws OsError with code 1131
    // (ERROR_POSSIBLE_DEADLOCK) if this thread holds the lock already, as in a statement within a
    // statement on the same logger, and std::system_error if the system can't let it wait.
    std::ostream& stream() VEK_ACQUIRE(lock);

    // A copy of the stream's text. For the thread that holds the lock.
    std::string streamText() const VEK_REQUIRES(lock) { return std::string(buffer.view()); }

    // Does as `emit` with the stream's text. For the thread that holds the lock.
    void emitStream(Level messageLevel) VEK_REQUIRES(lock);

    // Unlocks this logger. For the thread that holds the lock.
    void releaseStream() VEK_RELEASE(lock) {
        lock.unlock();
        gate.leave();
    }

    // --- messages ---

    // Makes a message of `text` and submits it. Blocks while the manager's queue is full. Throws
    // UsageError, "log manager: received null message", if memory is exhausted.
    void emit(Level messageLevel, std::string text);

    // The same with a text formatted by vek::format, or by vek::formatv for a caller with its own
    // "...". Deliberately unlike `emit`, these lose the message silently if memory is exhausted.
    void logf(Level messageLevel, const char* pattern, ...);
    void logfv(Level messageLevel, const char* pattern, std::va_list arguments);

    // Return a new message of this logger, stamped with the calling thread and the current time,
    // or null if memory is exhausted. The caller owns it until it submits it. Throw nothing.
    Message* makeMessage(Level messageLevel, std::string text) const;
    Message* makeMessagef(Level messageLevel, const char* pattern, ...) const;
    Message* makeMessagefv(Level messageLevel, const char* pattern, std::va_list arguments) const;

    // The same for a message with attributes. Fill in `attrs` before you submit it.
    AttrMessage* makeAttrMessage(Level messageLevel, std::string text) const;
    AttrMessage* makeAttrMessagef(Level messageLevel, const char* pattern, ...) const;
    AttrMessage* makeAttrMessagefv(Level messageLevel, const char* pattern,
                                   std::va_list arguments) const;

    // Calls Manager::submit, which takes ownership.
    void submit(Message* message);

  private:
    // Its annotations name the lock.
    friend class StreamRelease;

    Message* reuse(Level messageLevel, std::string_view text) const;
    template <class Made>
    Made* make(Level messageLevel, std::string& text) const;
    template <class Made>
    Made* makef(Level messageLevel, const char* pattern, std::va_list arguments) const;

    Manager* const manager;
    const std::string ownName;
    // Only used with the manager's mutex held.
    bool muted = false;
    // These five are written with the manager's mutex held and read without it.
    std::atomic<bool> followsDefault = true;
    std::atomic<Level> currentLevel;
    // `currentLevel`, or OFF while muted.
    std::atomic<Level> threshold;
    std::atomic<std::uint32_t> pid;
    // The stream still has the format flags from before a shutdown.
    std::atomic<bool> hasOldFormat = false;
    // Keeps its memory from one statement to the next.
    TextBuffer buffer VEK_GUARDED_BY(lock);
    std::ostream out VEK_GUARDED_BY(lock){&buffer};
    // Threads wait here, and the lock behind it finds a second lock by its owner.
    Gate gate;
    thread::Mutex lock{true};
};

}  // namespace vek::log
