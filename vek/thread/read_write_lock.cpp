#include "vek/thread/read_write_lock.h"

namespace vek::thread {

ReadWriteLock::ReadWriteLock() {
    resolveReadWriteFunctions();
    const ReadWriteFunctions* functions = nativeReadWriteLocks();
    if (functions == nullptr) {
        state = std::make_unique<ReadWriteEmulation>();
        return;
    }
    Native& native = state.emplace<Native>();
    native.functions = *functions;
    native.functions.initialize(&native.lock);
}

void ReadWriteLock::lockShared() {
    if (Native* native = std::get_if<Native>(&state)) {
        native->functions.acquireShared(&native->lock);
        sharedHeld.store(true, std::memory_order_relaxed);
    } else {
        std::get<std::unique_ptr<ReadWriteEmulation>>(state)->lockShared();
    }
}

void ReadWriteLock::lockExclusive() {
    if (Native* native = std::get_if<Native>(&state)) {
        native->functions.acquireExclusive(&native->lock);
        sharedHeld.store(false, std::memory_order_relaxed);
    } else {
        std::get<std::unique_ptr<ReadWriteEmulation>>(state)->lockExclusive();
    }
}

void ReadWriteLock::unlock() {
    Native* native = std::get_if<Native>(&state);
    if (native == nullptr) {
        std::get<std::unique_ptr<ReadWriteEmulation>>(state)->unlock();
    } else if (sharedHeld.load(std::memory_order_relaxed)) {
        native->functions.releaseShared(&native->lock);
    } else {
        native->functions.releaseExclusive(&native->lock);
    }
}

}  // namespace vek::thread
