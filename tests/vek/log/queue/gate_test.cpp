#include "vek/log/queue/gate.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "tests/vek/log/log_capture.h"
#include "tests/vek/log/queue/waiting_threads.h"

namespace {

using vek::log::Gate;
using vek_test::becomesTrue;
using vek_test::ScopedThread;

class GateOn : public vek_test::OnEachSystem {};
INSTANTIATE_TEST_SUITE_P(Systems, GateOn, vek_test::eachSystem, vek_test::systemName);

using WatchedGate = vek_test::WatchedSleeps;

TEST_P(GateOn, LetsOneThreadInAtATimeAndForgetsNone) {
    constexpr int threadCount = 6;
    constexpr int each = 3000;
    Gate gate;
    // Not atomic: without the gate, additions are lost.
    volatile int passed = 0;
    std::atomic<int> inside = 0;
    std::atomic<int> mostInside = 0;
    {
        std::vector<std::unique_ptr<ScopedThread>> threads;
        for (int t = 0; t < threadCount; ++t) {
            threads.push_back(std::make_unique<ScopedThread>([&] {
                for (int i = 0; i < each; ++i) {
                    gate.enter();
                    if (++inside > 1) {
                        mostInside = 2;
                    }
                    passed = passed + 1;
                    --inside;
                    gate.leave();
                }
            }));
        }
    }
    EXPECT_EQ(mostInside, 0);
    EXPECT_EQ(passed, threadCount * each);
}

TEST_P(GateOn, ForgetsNoneOfThoseWhoComeTogether) {
    constexpr int threadCount = 3;
    constexpr int rounds = 3000;
    Gate gate;
    // In each round all come at once, and the last to leave finds nobody who comes later.
    std::atomic<int> came = 0;
    std::atomic<int> passed = 0;
    {
        std::vector<std::unique_ptr<ScopedThread>> threads;
        for (int t = 0; t < threadCount; ++t) {
            threads.push_back(std::make_unique<ScopedThread>([&] {
                for (int round = 1; round <= rounds; ++round) {
                    ++came;
                    while (came < round * threadCount) {
                        std::this_thread::yield();
                    }
                    gate.enter();
                    gate.leave();
                    ++passed;
                }
            }));
        }
    }
    EXPECT_EQ(passed, threadCount * rounds);
}

TEST_F(WatchedGate, SleepsOnlyWhileAnotherThreadIsInside) {
    Gate gate;
    gate.enter();
    gate.leave();
    EXPECT_EQ(sleeps(), 0u);
    gate.enter();
    std::atomic<bool> isIn = false;
    {
        ScopedThread other([&] {
            gate.enter();
            isIn = true;
            gate.leave();
        });
        EXPECT_TRUE(someoneSleeps(1));
        EXPECT_FALSE(isIn);
        gate.leave();
    }
    EXPECT_TRUE(isIn);
}

TEST_F(WatchedGate, EachThreadThatLeavesWakesTheNext) {
    constexpr int count = 3;
    Gate gate;
    std::atomic<int> passed = 0;
    gate.enter();
    std::vector<std::unique_ptr<ScopedThread>> threads;
    for (int i = 0; i < count; ++i) {
        threads.push_back(std::make_unique<ScopedThread>([&] {
            gate.enter();
            ++passed;
            gate.leave();
        }));
    }
    EXPECT_TRUE(someoneSleeps(count));
    gate.leave();
    EXPECT_TRUE(becomesTrue([&] { return passed == count; }));
}

TEST_F(WatchedGate, FailureToSleepIsTheStandardSystemErrorAndLeavesTheGateUsable) {
    Gate gate;
    gate.enter();
    failSleepsWith(ERROR_NOT_ENOUGH_MEMORY);
    int failure = 0;
    {
        ScopedThread other([&] { failure = vek_test::systemErrorOf([&] { gate.enter(); }); });
    }
    EXPECT_EQ(failure, ERROR_NOT_ENOUGH_MEMORY);
    failSleepsWith(0);
    std::atomic<bool> isIn = false;
    {
        ScopedThread other([&] {
            gate.enter();
            isIn = true;
            gate.leave();
        });
        EXPECT_TRUE(someoneSleeps(1));
        EXPECT_FALSE(isIn);
        gate.leave();
    }
    EXPECT_TRUE(isIn);
    gate.enter();
    gate.leave();
}

}  // namespace
