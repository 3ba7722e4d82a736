// vek::log::QueueLock: the mutex of a BoundedQueue and its two conditions.
//
// Uses vek::thread::Mutex and Condition where the system has condition variables: they cost a tenth
// of the C++ runtime's. On other systems it uses the C++ runtime's, since the emulated conditions
// of vek::thread throw at each wake-up.
#pragma once

#include <cstddef>
#include <memory>

#include "vek/base/compiler.h"
#include "vek/base/no_copy.h"

namespace vek::log {

// Thread-safe. Every operation throws std::system_error if the system fails.
class VEK_CAPABILITY QueueLock : public NoCopy {
  public:
    enum Condition : std::size_t { notEmpty = 0, notFull = 1 };

    // Looks up the system's condition variables if that wasn't done before.
    QueueLock();
    ~QueueLock();

    // Lock (without a time-out) and unlock the mutex, which isn't recursive.
    void lock() VEK_ACQUIRE();
    void unlock() VEK_RELEASE();

    // Call with the mutex held: unlocks it, sleeps until a wake-up, and locks it again. May return
    // without a wake-up. The mutex is held also if this throws.
    void wait(Condition condition) VEK_REQUIRES(this);

    // Call with the mutex held: wakes one thread that waits for `condition` and hasn't been woken
    // yet, if there is one.
    void wakeOne(Condition condition) VEK_REQUIRES(this);

    // The same for all such threads.
    void wakeAll(Condition condition) VEK_REQUIRES(this);

  private:
    void leave(Condition condition) VEK_REQUIRES(this);

    struct Native;
    struct Portable;

    // One of the two is null.
    const std::unique_ptr<Native> native;
    const std::unique_ptr<Portable> portable;
    // Threads waiting on each condition, and how many of those have been woken but don't run yet. A
    // wake-up that nobody needs is skipped.
    std::size_t waiters[2] VEK_GUARDED_BY(this) = {};
    std::size_t woken[2] VEK_GUARDED_BY(this) = {};
};

}  // namespace vek::log
