#include "vek/log/logger.h"

#include <new>
#include <type_traits>
#include <utility>

#include "vek/base/format.h"
#include "vek/log/fast_numbers.h"
#include "vek/log/manager.h"

namespace vek::log {

Logger::Logger(Manager& owner, std::string loggerName, Level initialLevel, std::uint32_t processId)
    : manager(&owner),
      ownName(std::move(loggerName)),
      currentLevel(initialLevel),
      threshold(initialLevel),
      pid(processId) {
    printNumbersFast(out);
}

void Logger::setLevel(Level newLevel, bool followDefault) {
    currentLevel.store(newLevel, std::memory_order_relaxed);
    followsDefault.store(followDefault, std::memory_order_relaxed);
    threshold.store(muted ? OFF : newLevel, std::memory_order_relaxed);
}

void Logger::setMuted(bool mute) {
    muted = mute;
    threshold.store(muted ? OFF : level(), std::memory_order_relaxed);
}

void Logger::renew(Level initialLevel, std::uint32_t processId) {
    setLevel(initialLevel, true);
    setPid(processId);
    // The stream belongs to whoever holds the lock, which must not be taken here: its holder may be
    // waiting for the manager's mutex.
    hasOldFormat.store(true, std::memory_order_relaxed);
}

std::ostream& Logger::stream() {
    // A statement within a statement must not wait for its own thread.
    if (!lock.isHeldByCaller()) {
        gate.enter();
    }
    try {
        lock.lock();
    } catch (...) {
        // The mutex throws with its section entered a second time. The outer statement keeps its
        // own lock.
        lock.unlock();
        throw;
    }
    buffer.clear();
    out.clear();
    if (hasOldFormat.load(std::memory_order_relaxed)) {
        hasOldFormat.store(false, std::memory_order_relaxed);
        out.copyfmt(std::ios(nullptr));
        printNumbersFast(out);
    }
    return out;
}

void Logger::emit(Level messageLevel, std::string text) {
    submit(makeMessage(messageLevel, std::move(text)));
}

void Logger::emitStream(Level messageLevel) {
    Message* const reused = reuse(messageLevel, buffer.view());
    submit(reused != nullptr ? reused : makeMessage(messageLevel, streamText()));
}

void Logger::logf(Level messageLevel, const char* pattern, ...) {
    std::va_list arguments;
    va_start(arguments, pattern);
    Message* const message = makeMessagefv(messageLevel, pattern, arguments);
    va_end(arguments);
    if (message != nullptr) {
        submit(message);
    }
}

void Logger::logfv(Level messageLevel, const char* pattern, std::va_list arguments) {
    Message* const message = makeMessagefv(messageLevel, pattern, arguments);
    if (message != nullptr) {
        submit(message);
    }
}

// Null if there is no spent message, or no memory for the text; also for a long text, which is
// better moved than copied, and whose message wouldn't be kept afterwards.
Message* Logger::reuse(Level messageLevel, std::string_view text) const {
    if (text.size() > SpentMessages::longestText) {
        return nullptr;
    }
    std::unique_ptr<Message> message = manager->takeSpent();
    if (message == nullptr) {
        return nullptr;
    }
    try {
        message->reuse(ownName, text, messageLevel, pid.load(std::memory_order_relaxed));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    return message.release();
}

// Null also if there is no memory for the strings.
template <class Made>
Made* Logger::make(Level messageLevel, std::string& text) const {
    if constexpr (std::is_same_v<Made, Message>) {
        if (Message* const reused = reuse(messageLevel, text)) {
            return reused;
        }
    }
    try {
        return new (std::nothrow)
            Made(ownName, std::move(text), messageLevel, pid.load(std::memory_order_relaxed));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

template <class Made>
Made* Logger::makef(Level messageLevel, const char* pattern, std::va_list arguments) const {
    std::string text;
    try {
        text = formatv(pattern, arguments);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    return make<Made>(messageLevel, text);
}

Message* Logger::makeMessage(Level messageLevel, std::string text) const {
    return make<Message>(messageLevel, text);
}

Message* Logger::makeMessagef(Level messageLevel, const char* pattern, ...) const {
    std::va_list arguments;
    va_start(arguments, pattern);
    Message* const message = makef<Message>(messageLevel, pattern, arguments);
    va_end(arguments);
    return message;
}

Message* Logger::makeMessagefv(Level messageLevel, const char* pattern,
                               std::va_list arguments) const {
    return makef<Message>(messageLevel, pattern, arguments);
}

AttrMessage* Logger::makeAttrMessage(Level messageLevel, std::string text) const {
    return make<AttrMessage>(messageLevel, text);
}

AttrMessage* Logger::makeAttrMessagef(Level messageLevel, const char* pattern, ...) const {
    std::va_list arguments;
    va_start(arguments, pattern);
    AttrMessage* const message = makef<AttrMessage>(messageLevel, pattern, arguments);
    va_end(arguments);
    return message;
}

AttrMessage* Logger::makeAttrMessagefv(Level messageLevel, const char* pattern,
                                       std::va_list arguments) const {
    return makef<AttrMessage>(messageLevel, pattern, arguments);
}

void Logger::submit(Message* message) {
    manager->submit(message);
}

}  // namespace vek::log
