// vek::thread::Condition: a condition variable and its mutex.
//
// It uses the system's condition variables where there are any (see condition_functions.h) and a
// ConditionEmulation otherwise; which, is settled when it is made. An emulated one doesn't do what
// a native one does: read condition_emulation.h for what a woken waiter gets there.
#pragma once

#include <cstdint>
#include <memory>
#include <variant>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/thread/condition_emulation.h"
#include "vek/thread/condition_functions.h"
#include "vek/thread/mutex.h"
#include "vek/thread/scope_guard.h"
#include "vek/time/clock.h"

namespace vek::thread {

// Safe from any thread. It has to outlive its waiters.
class Condition : public NoCopy {
  public:
    // Makes a mutex of its own, which checks re-entry. Throws OsError if there is nothing to sleep
    // on, which can't happen on a system with condition variables.
    Condition();

    // Uses `sharedMutex`, which isn't owned and has to outlive the condition. A recursive one is to
    // be held once only when waiting. Throws as above.
    explicit Condition(Mutex& sharedMutex);

    // To be called with the mutex held. Leaves it, sleeps until a wake-up, and returns with the
    // mutex held. The system may wake a waiter without a wake-up. Throws OsError if the system
    // fails: the mutex is held then, but if it checks re-entry, a native wait has lost count of one
    // locking. Stands on SleepConditionVariableCS.
    void wait();

    // The same, but not beyond `deadline`. True on a wake-up, false on time-out; a deadline in the
    // past still lets others have the mutex for a moment. The time left is taken at the call and
    // cut to 32 bits (see deadline.h).
    bool waitUntil(const time::MonotonicClock& deadline);

    // Wake one waiter, or all; without one nothing happens. The mutex may be held or not. A native
    // condition throws nothing, an emulated one OsError if the system fails. Stand on
    // WakeConditionVariable and WakeAllConditionVariable.
    void wakeOne();
    void wakeAll();

    // The mutex that goes with the condition. ScopeGuard takes the condition itself.
    Mutex& getMutex() { return mutex; }

  private:
    // Holds its functions, so that it survives their being forgotten at the end of the program.
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

// Runs `wait`, a function that waits on `condition` with its mutex held by `guard`, and gives back
// its result. If the wait throws with the mutex not held, as it does for a woken waiter of an
// emulated condition, `guard` is dismissed: a section must not be left by a thread that isn't in
// it.
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
