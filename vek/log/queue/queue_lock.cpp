#include "vek/log/queue/queue_lock.h"

#include <condition_variable>
#include <mutex>
#include <system_error>

#include "vek/base/windows.h"
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

// Takes 2 to 20 microseconds, as the processor's pause does.
constexpr int looks = 400;

void lookForChange(const std::atomic<std::size_t>& size, std::size_t before) {
    for (int i = 0; i < looks && size.load(std::memory_order_relaxed) == before; ++i) {
        YieldProcessor();
    }
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

void QueueLock::wait(Condition condition, const std::atomic<std::size_t>& size,
                     std::size_t before) {
    bool& isLooking = waiters[condition].isLooking;
    if (!isLooking) {
        isLooking = true;
        unlock();
        lookForChange(size, before);
        lock();
        isLooking = false;
    }
    if (size.load() == before) {
        sleep(condition);
    }
}

void QueueLock::sleep(Condition condition) {
    ++waiters[condition].sleeping;
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

// A thread that the system woke by itself is taken for the woken one. The thread that was really
// woken comes too, so that at worst one wake-up too many follows.
void QueueLock::leave(Condition condition) {
    Waiters& all = waiters[condition];
    --all.sleeping;
    all.isWoken = false;
}

bool QueueLock::mustWake(Condition condition) {
    Waiters& all = waiters[condition];
    if (all.isLooking || all.isWoken || all.sleeping == 0) {
        return false;
    }
    all.isWoken = true;
    return true;
}

void QueueLock::wake(Condition condition) {
    if (native != nullptr) {
        native->conditions[condition].wakeOne();
    } else {
        portable->conditions[condition].notify_one();
    }
}

}  // namespace vek::log
