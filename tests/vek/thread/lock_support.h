// What the tests of the locks share: choosing between native and emulated, and waiting for other
// threads with a bound.
#pragma once

#include <atomic>
#include <chrono>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/open_handles.h"
#include "vek/base/optional_function.h"
#include "vek/base/shared_lib.h"
#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/thread/condition_functions.h"
#include "vek/thread/read_write_functions.h"

namespace vek_test {

// The bound of every wait for something that is bound to happen.
inline constexpr std::chrono::seconds enough{60};

// Makes conditions and locks come from a library for a scope: from the system, or from one of the
// test's own libraries, which may lack them.
class LookedUpIn {
  public:
    LookedUpIn(const std::string& conditionLibrary, const std::string& lockLibrary) {
        conditions.load(conditionLibrary, 0);
        locks.load(lockLibrary, 0);
        vek::thread::resetConditionFunctions();
        vek::thread::resetReadWriteFunctions();
        vek::thread::resolveConditionFunctions(conditions);
        vek::thread::resolveReadWriteFunctions(locks);
    }
    ~LookedUpIn() {
        vek::thread::resetConditionFunctions();
        vek::thread::resetReadWriteFunctions();
    }
    LookedUpIn(const LookedUpIn&) = delete;
    LookedUpIn& operator=(const LookedUpIn&) = delete;

    const vek::SharedLib& conditionLibrary() const { return conditions; }

  private:
    vek::SharedLib conditions;
    vek::SharedLib locks;
};

inline constexpr const char* nativeLibrary = "kernel32";
inline constexpr const char* olderLibrary = "older_system.dll";
inline constexpr const char* watchedLibrary = "watched_conditions.dll";

// Signalled by one thread for another.
class Signal {
  public:
    Signal() = default;
    ~Signal() { CloseHandle(event); }
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    void set() { SetEvent(event); }
    // False if it hasn't come in time.
    bool wait(std::chrono::milliseconds timeout = enough) {
        return WaitForSingleObject(event, static_cast<DWORD>(timeout.count())) == WAIT_OBJECT_0;
    }

  private:
    const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
};

// Waits until `condition` holds, where there is nothing to sleep on. False if it doesn't in time.
template <class Condition>
bool becomesTrue(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + enough;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

// Lets `count` threads pass together, again and again. It uses nothing but atomics: the
// runtime's own one is built on what is tested here, and less reliable.
class Barrier {
  public:
    explicit Barrier(int count) : threads(count) {}

    // False if the others don't come in time.
    bool arriveAndWait() {
        const int ownRound = round;
        if (++arrived == threads) {
            arrived = 0;
            ++round;
            return true;
        }
        return becomesTrue([&] { return round != ownRound; });
    }

  private:
    const int threads;
    std::atomic<int> arrived = 0;
    std::atomic<int> round = 0;
};

using support::openHandles;

// The text of the exception of class E that `f` throws.
template <class E, class F>
std::string textOf(F f) {
    try {
        f();
    } catch (const E& error) {
        return error.what();
    }
    return "(nothing was thrown)";
}

// The number of the OsError that `f` throws; 0 if it throws none.
template <class F>
std::uint32_t osErrorOf(F f) {
    try {
        f();
    } catch (const vek::OsError& error) {
        return error.code();
    }
    return 0;
}

}  // namespace vek_test
