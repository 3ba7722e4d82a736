// vek::thread::ConditionEmulation: a condition variable made of an event and a mutex, for systems
// that have none of their own.
//
// Waiters take tickets. A wake-up raises the highest ticket released; all sleepers wake at the
// event, and those whose ticket is covered leave, so that waiters leave in the order in which they
// came. The tickets of waiters that gave up are skipped.
//
// What a woken waiter gets, deliberately: not a return, but OsError with code 1131
// (ERROR_POSSIBLE_DEADLOCK). Its last step locks the emulation's own lock, which it holds already,
// where the caller's mutex would be expected. At that moment
//   - the caller's mutex is NOT held: a guard on it has to be dismissed (see sleepUnder);
//   - the emulation's own lock is held twice by the woken thread. Until that thread has left it
//     twice (`getLock().unlock()`), every operation of other threads on this emulation blocks, and
//     every one of its own throws the same error once more. A thread that ends without that leaves
//     the emulation unusable but for its destruction.
// Ways out by time-out or failure hold the caller's mutex and leave the own lock free.
//
// Two more things stand as they are: a waiter that gives up in the very moment in which it is
// released leaves that release behind, as do waiters that give up in another order than they came.
// The next wake-up may then reach nobody.
#pragma once

#include <cstdint>
#include <deque>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/thread/mutex.h"
#include "vek/time/clock.h"

namespace vek::thread {

// Safe from any thread; `mutex` is to be the same for all waiters. It has to outlive its waiters.
class ConditionEmulation : public NoCopy {
  public:
    // Throws OsError if there is no event to be had. Stands on CreateEventA.
    ConditionEmulation();

    // An event that can't be closed is reported on std::cerr: "error closing event!". Throws
    // nothing.
    ~ConditionEmulation();

    // Leaves `mutex`, which the caller holds once, and sleeps until a wake-up reaches this waiter,
    // which is told as said above. Throws OsError, with `mutex` held, if the system fails. Stands
    // on WaitForSingleObject.
    void wait(Mutex& mutex);

    // The same, but gives false, with `mutex` held, if no wake-up came in time. The time left until
    // `deadline` is taken once, at the call, and deliberately used whole for each of the waits that
    // other waiters' wake-ups may make of this one.
    bool waitUntil(Mutex& mutex, const time::MonotonicClock& deadline);

    // Releases the waiter that came first, or all; does nothing if there is none that isn't
    // released already. Throws OsError if the system fails; the waiters count as released then.
    // Stand on SetEvent.
    void wakeOne();
    void wakeAll();

    // The emulation's own lock, for a woken waiter to leave.
    Mutex& getLock() { return lock; }

  private:
    bool sleep(Mutex& mutex, std::uint32_t timeoutMs);
    bool leaveIfReleased(std::uint32_t ticket, Mutex& mutex);
    void giveUp(std::uint32_t ticket, Mutex& mutex);
    void signal();

    // Waiters that are released and not yet gone.
    std::uint32_t releaseCount = 0;
    std::uint32_t waiterCount = 0;
    std::uint32_t nextTicket = 1;
    // The highest ticket that is released.
    std::uint32_t releasedUpTo = 0;
    // The tickets of waiters that gave up, as they left.
    std::deque<std::uint32_t> abandoned;
    // Where all waiters sleep; signalled while any is released and not yet gone.
    HANDLE event;
    // Guards the above, and is the innermost lock of all.
    Mutex lock{true};
};

}  // namespace vek::thread
