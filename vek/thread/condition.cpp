#include "vek/thread/condition.h"

#include "vek/thread/deadline.h"

namespace vek::thread {

Condition::Condition() : ownMutex(std::make_unique<Mutex>(true)), mutex(*ownMutex) {
    makeState();
}

Condition::Condition(Mutex& sharedMutex) : mutex(sharedMutex) {
    makeState();
}

void Condition::makeState() {
    resolveConditionFunctions();
    const ConditionFunctions* functions = nativeConditions();
    if (functions == nullptr) {
        state = std::make_unique<ConditionEmulation>();
        return;
    }
    Native& native = state.emplace<Native>();
    native.functions = *functions;
    native.functions.initialize(&native.variable);
}

void Condition::wait() {
    Native* native = std::get_if<Native>(&state);
    if (native == nullptr) {
        std::get<std::unique_ptr<ConditionEmulation>>(state)->wait(mutex);
        return;
    }
    const std::uint32_t error = sleep(*native, INFINITE);
    if (error != ERROR_SUCCESS) {
        throw OsError(error);
    }
}

bool Condition::waitUntil(const time::MonotonicClock& deadline) {
    Native* native = std::get_if<Native>(&state);
    if (native == nullptr) {
        return std::get<std::unique_ptr<ConditionEmulation>>(state)->waitUntil(mutex, deadline);
    }
    const std::uint32_t error = sleep(*native, millisecondsUntil(deadline));
    if (error == ERROR_TIMEOUT) {
        ++mutex.depth;
        return false;
    }
    if (error != ERROR_SUCCESS) {
        throw OsError(error);
    }
    return true;
}

// Returns the error number of a failed sleep, or ERROR_SUCCESS. After a failure the depth of the
// mutex is that of a mutex that isn't held.
std::uint32_t Condition::sleep(Native& native, std::uint32_t timeoutMs) {
    --mutex.depth;
    if (native.functions.sleep(&native.variable, &mutex.section, timeoutMs) == 0) {
        return GetLastError();
    }
    ++mutex.depth;
    return ERROR_SUCCESS;
}

void Condition::wakeOne() {
    if (Native* native = std::get_if<Native>(&state)) {
        native->functions.wakeOne(&native->variable);
    } else {
        std::get<std::unique_ptr<ConditionEmulation>>(state)->wakeOne();
    }
}

void Condition::wakeAll() {
    if (Native* native = std::get_if<Native>(&state)) {
        native->functions.wakeAll(&native->variable);
    } else {
        std::get<std::unique_ptr<ConditionEmulation>>(state)->wakeAll();
    }
}

}  // namespace vek::thread
