// vek::thread::ConditionEmulation: a condition variable made of an event and a mutex, for systems
// without condition variables.
//
// Waiters take tickets. A wake-up raises the highest ticket released; the event wakes all waiters,
// and those whose ticket is released return, so that waiters return in the order in which they
// came. The tickets of waiters that gave up are skipped.
//
// Deliberately, a woken waiter doesn't return: it throws OsError with code 1131
// (ERROR_POSSIBLE_DEADLOCK), because its last step locks the emulation's internal lock, which it
// holds already, instead of the caller's mutex. When it throws,
//   - the caller's mutex is NOT held: a guard on it must be dismissed (see sleepUnder);
//   - the woken thread holds the internal lock twice. Until it has unlocked it twice
//     (`getLock().unlock()`), every operation of other threads on this emulation blocks, and every
//     operation of its own throws the same error again. If the thread ends without that, the
//     emulation can only be destroyed.
// After a time-out or a failure the caller's mutex is held and the internal lock is free.
//
// Two more deliberate limits: a waiter that gives up at the moment of its release leaves that
// release behind, and so do waiters that give up in another order than they came. The next wake-up
// may then wake no thread.
#pragma once

#include <cstdint>
#include <deque>

#include "vek/base/compiler.h"
#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/thread/mutex.h"
#include "vek/time/clock.h"

namespace vek::thread {

// Thread-safe; all waiters must pass the same `mutex`. Must outlive its waiters.
class ConditionEmulation : public NoCopy {
  public:
    // Calls CreateEventA. Throws OsError on failure.
    ConditionEmulation();

    // If the event can't be closed, reports "error closing event!" on std::cerr. Throws nothing.
    ~ConditionEmulation();

    // Releases `mutex`, which the caller holds once, and blocks until this waiter is woken, which
    // throws as said above. Throws OsError, with `mutex` held, if the system call fails. Calls
    // WaitForSingleObject.
    void wait(Mutex& mutex) VEK_REQUIRES(mutex);

    // The same, but returns false, with `mutex` held, on time-out. The remaining time until
    // `deadline` is computed once, at the call, and deliberately used in full again each time a
    // wake-up of another waiter interrupts the wait.
    bool waitUntil(Mutex& mutex, const time::MonotonicClock& deadline) VEK_REQUIRES(mutex);

    // Release the first waiter, or all; do nothing if all are released already. Call SetEvent.
    // Throw OsError if that fails; the waiters count as released then.
    void wakeOne();
    void wakeAll();

    // The internal lock, for a woken waiter to unlock.
    Mutex& getLock() VEK_RETURN_CAPABILITY(lock) { return lock; }

  private:
    bool sleep(Mutex& mutex, std::uint32_t timeoutMs) VEK_REQUIRES(mutex);
    // Its body isn't checked: the lock that it leaves held is deliberately the wrong one.
    bool leaveIfReleased(std::uint32_t ticket, Mutex& mutex)
        VEK_TRY_ACQUIRE(true, mutex) VEK_NO_LOCK_ANALYSIS;
    void giveUp(std::uint32_t ticket, Mutex& mutex) VEK_ACQUIRE(mutex);
    void signal();

    // Waiters that are released but haven't returned yet.
    std::uint32_t releaseCount VEK_GUARDED_BY(lock) = 0;
    std::uint32_t waiterCount VEK_GUARDED_BY(lock) = 0;
    std::uint32_t nextTicket VEK_GUARDED_BY(lock) = 1;
    // The highest ticket that is released.
    std::uint32_t releasedUpTo VEK_GUARDED_BY(lock) = 0;
    // The tickets of waiters that gave up, in the order in which they left.
    std::deque<std::uint32_t> abandoned VEK_GUARDED_BY(lock);
    // All waiters wait for it; signalled while a released waiter hasn't returned yet.
    HANDLE event;
    // The innermost lock of all.
    Mutex lock{true};
};

}  // namespace vek::thread
