#include "vek/base/std_mutex.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <set>
#include <thread>

#include <gtest/gtest.h>

#include "tests/support/open_handles.h"

namespace {

using Handles = std::set<std::uintptr_t>;
using support::openHandles;

// Gives a slow machine a minute.
template <class Condition>
void waitFor(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!condition() && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
}

// Lets a thread wait for a new mutex. Returns the handles that this has opened.
Handles openedByAWait(vek::StdMutex& mutex) {
    std::atomic<bool> runs = false;
    std::atomic<bool> mayLock = false;
    mutex.lock();
    std::thread other([&] {
        runs = true;
        while (!mayLock) {
            std::this_thread::yield();
        }
        const vek::StdGuard guard(mutex);
    });
    // Then the thread has opened those of its own.
    waitFor([&] { return runs.load(); });
    const Handles before = openHandles();
    Handles opened;
    mayLock = true;
    waitFor([&] {
        opened = openHandles();
        std::erase_if(opened, [&](std::uintptr_t handle) { return before.contains(handle); });
        return !opened.empty();
    });
    mutex.unlock();
    other.join();
    return opened;
}

// Objects that come and go would use up the handles of their process otherwise.
TEST(StdMutex, ClosesTheEventThatAWaitingThreadHasOpened) {
    Handles opened;
    {
        vek::StdMutex mutex;
        opened = openedByAWait(mutex);
        EXPECT_FALSE(opened.empty());
    }
    const Handles open = openHandles();
    EXPECT_TRUE(
        std::ranges::none_of(opened, [&](std::uintptr_t handle) { return open.contains(handle); }));
}

}  // namespace
