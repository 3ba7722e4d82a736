// vek::thread::Condition: a condition variable and its mutex.
//
// Uses the system's condition variables if there are any (see condition_functions.h), otherwise a
// ConditionEmulation; the constructor decides. An emulated condition differs from a native one: see
// condition_emulation.h for what happens to a woken waiter.
#pragma once

#include <cstdint>
#include <memory>
#include <variant>

#include "vek/base/compiler.h"
#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/thread/condition_emulation.h"
#include "vek/thread/condition_functions.h"
#include "vek/thread/mutex.h"
#include "vek/thread/scope_guard.h"
#include "vek/time/clock.h"

namespace vek::thread {

// Thread-safe. Must outlive its waiters.
//
// For the compiler's check of locks a condition is a lock: a ScopeGuard on it holds it, and members
// may be guarded by it. The check doesn't know that a shared mutex belongs to a condition, so the
// waits don't ask for it.
class VEK_CAPABILITY Condition : public NoCopy {
  public:
    // Makes its own mutex, which checks re-entry. Throws OsError if an emulation can't be made; on
    // a system with condition variables this can't happen.
    Condition();

    // Uses `sharedMutex`, which isn't owned and must outlive the condition. A recursive mutex must
    // be held only once when waiting. Throws as above.
    explicit Condition(Mutex& sharedMutex);

    // The caller holds the mutex. Releases it, blocks until a wake-up, and returns with the mutex
    // held. Spurious wake-ups are possible. Throws OsError if the system call fails: the mutex is
    // held then, but if it checks re-entry, the count of a native wait is one locking short. Calls
    // SleepConditionVariableCS.
    void wait() VEK_NO_LOCK_ANALYSIS;

    // The same, but returns at `deadline` at the latest. Returns true on a wake-up, false on
    // time-out. With a deadline in the past the mutex is still released for a moment. The remaining
    // time is computed at the call and truncated to 32 bits (see deadline.h).
    bool waitUntil(const time::MonotonicClock& deadline) VEK_NO_LOCK_ANALYSIS;

    // Wake one waiter, or all; without waiters nothing happens. The mutex may be held or not. A
    // native condition throws nothing, an emulated one OsError if the system call fails. Call
    // WakeConditionVariable and WakeAllConditionVariable.
    void wakeOne();
    void wakeAll();

    // The mutex of the condition. To lock it, construct a ScopeGuard on the condition.
    Mutex& getMutex() { return mutex; }

  private:
    // Has a copy of the functions, so that it works after resetConditionFunctions.
    struct Native {
        ConditionFunctions functions;
        CONDITION_VARIABLE variable;
    };

    void makeState();
    std::uint32_t sleep(Native& native, std::uint32_t timeoutMs);

    std::variant<Native, std::unique_ptr<ConditionEmulation>> state;
    // Null if the mutex was handed in.
    const std::unique_ptr<Mutex> ownMutex;
    Mutex& mutex;
};

// Calls `wait`, a function that waits on `condition` while `guard` holds the mutex, and returns its
// result. If the wait throws and the mutex isn't held, as for a woken waiter of an emulated
// condition, dismisses `guard`: a thread must not leave a critical section that it isn't in.
template <class Wait>
auto sleepUnder(ScopeGuard& guard, Condition& condition, Wait wait) {
    try {
        return wait();
    } catch (const OsError&) {
        if (!condition.getMutex().isHeldByCaller()) {
            guard.dismiss();
        }
        throw;
    }
}

}  // namespace vek::thread
