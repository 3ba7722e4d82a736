// vek::log::QueueLock: the mutex of a BoundedQueue and its two conditions.
//
// Uses vek::thread::Mutex and Condition where the system has condition variables: they cost a tenth
// of the C++ runtime's. On other systems it uses the C++ runtime's, since the emulated conditions
// of vek::thread throw at each wake-up.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include "vek/base/compiler.h"
#include "vek/base/no_copy.h"

namespace vek::log {

// Thread-safe. Every operation throws std::system_error if the system fails.
class VEK_CAPABILITY QueueLock : public NoCopy {
  public:
    // What a thread waits for.
    enum Condition : std::size_t { notEmpty = 0, notFull = 1 };

    // Looks up the system's condition variables if that wasn't done before.
    QueueLock();
    ~QueueLock();

    // Lock (without a time-out) and unlock the mutex, which isn't recursive.
    void lock() VEK_ACQUIRE();
    void unlock() VEK_RELEASE();

    // Call with the mutex held, and with the value `before` of `size` for which the condition
    // doesn't hold: unlocks the mutex, blocks until the condition may hold, and locks it again.
    // Whoever changes `size` must then lock the mutex once and ask `mustWake`. The mutex is held
    // also if this throws.
    //
    // One thread for each condition first looks for some microseconds whether `size` changes: going
    // to sleep and being woken takes longer than the other side mostly needs. The others sleep.
    void wait(Condition condition, const std::atomic<std::size_t>& size, std::size_t before)
        VEK_REQUIRES(this);

    // Call with the mutex held, when `condition` holds: whether a sleeping thread must be woken for
    // it. If so, call `wake` once after unlocking. Returns false if a thread is on its way already,
    // woken or looking: it calls this when it leaves.
    bool mustWake(Condition condition) VEK_REQUIRES(this);

    // Call without the mutex. Throws nothing.
    void wake(Condition condition);

  private:
    void sleep(Condition condition) VEK_REQUIRES(this);
    void leave(Condition condition) VEK_REQUIRES(this);

    struct Native;
    struct Portable;

    // One of the two is null.
    const std::unique_ptr<Native> native;
    const std::unique_ptr<Portable> portable;
    // Of one condition.
    struct Waiters {
        std::size_t sleeping = 0;
        // One of those has been woken, but doesn't run yet.
        bool isWoken = false;
        // Another thread looks for the condition without sleeping.
        bool isLooking = false;
    };
    Waiters waiters[2] VEK_GUARDED_BY(this);
};

}  // namespace vek::log
