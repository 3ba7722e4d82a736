#include "vek/log/queue/queue_lock.h"

#include <condition_variable>
#include <mutex>
#include <system_error>

#include "vek/exception.h"
#include "vek/thread/condition.h"
#include "vek/thread/condition_functions.h"
#include "vek/thread/mutex.h"

namespace vek::log {

struct QueueLock::Native {
    // Without the check for re-entry: no thread locks it twice.
    thread::Mutex mutex{false};
    thread::Condition conditions[2] = {thread::Condition(mutex), thread::Condition(mutex)};
};

struct QueueLock::Portable {
    std::mutex mutex;
    std::condition_variable conditions[2];
};

namespace {

bool haveNativeConditions() {
    thread::resolveConditionFunctions();
    return thread::nativeConditions() != nullptr;
}

}  // namespace

QueueLock::QueueLock()
    : native(haveNativeConditions() ? std::make_unique<Native>() : nullptr),
      portable(native == nullptr ? std::make_unique<Portable>() : nullptr) {}

QueueLock::~QueueLock() = default;

void QueueLock::lock() {
    if (native != nullptr) {
        native->mutex.lock();
    } else {
        portable->mutex.lock();
    }
}

void QueueLock::unlock() {
    if (native != nullptr) {
        native->mutex.unlock();
    } else {
        portable->mutex.unlock();
    }
}

void QueueLock::wait(Condition condition) {
    ++waiters[condition];
    if (native != nullptr) {
        try {
            native->conditions[condition].wait();
        } catch (const OsError& error) {
            leave(condition);
            throw std::system_error(static_cast<int>(error.code()), std::system_category());
        }
    } else {
        std::unique_lock<std::mutex> held(portable->mutex, std::adopt_lock);
        portable->conditions[condition].wait(held);
        held.release();
    }
    leave(condition);
}

// A thread that the system woke by itself is counted as a woken one, if there are any. The thread
// that was really woken comes too, so that at worst one wake-up too many follows.
void QueueLock::leave(Condition condition) {
    --waiters[condition];
    if (woken[condition] != 0) {
        --woken[condition];
    }
}

void QueueLock::wakeOne(Condition condition) {
    if (woken[condition] == waiters[condition]) {
        return;
    }
    ++woken[condition];
    if (native != nullptr) {
        native->conditions[condition].wakeOne();
    } else {
        portable->conditions[condition].notify_one();
    }
}

void QueueLock::wakeAll(Condition condition) {
    while (woken[condition] != waiters[condition]) {
        wakeOne(condition);
    }
}

}  // namespace vek::log
