// The end of the shepherd, and children that outlive it.
#include <array>
#include <atomic>
#include <thread>

#include "tests/support/files.h"
#include "tests/vek/proc/proc_test.h"
#include "vek/base/shared_lib.h"
#include "vek/proc/shepherd.h"
#include "vek/thread/condition_functions.h"
#include "vek/time/clock.h"

namespace {

using vek::RuntimeError;
using vek::proc::Child;
using vek::proc::currentShepherd;
using vek::test::NamedEvent;

constexpr const char* gone = "The shepherd of this child is gone";

class ShepherdEnd : public vek::test::ProcTest {
  protected:
    static void startWaiting(Child& child, const NamedEvent& event, const std::string& code) {
        prepare(child, {"wait", event.name, code});
        child.start();
    }

    // Children whose exits let a shutdown return while others run.
    class LastChildren {
      public:
        LastChildren() {
            for (std::size_t i = 0; i < children.size(); ++i) {
                startWaiting(children[i], ends[i], "3");
            }
        }

        // Shuts the shepherd down. One exit is enough, unless it is noticed before the request to
        // stop.
        void shutDown() {
            std::atomic<bool> isDown = false;
            std::thread stopping([&isDown] {
                vek::proc::shutdownShepherd();
                isDown = true;
            });
            for (const NamedEvent& end : ends) {
                end.set();
                support::waitUntil([&isDown] { return isDown.load(); }, 3000);
            }
            stopping.join();
        }

        std::array<Child, 4> children;

      private:
        std::array<NamedEvent, 4> ends;
    };
};

TEST_F(ShepherdEnd, ChildOfAFormerShepherdCannotBeWaitedForThoughANewOneExists) {
    const NamedEvent end;
    Child unlimited;
    Child limited;
    LastChildren last;
    startWaiting(unlimited, end, "1");
    startWaiting(limited, end, "2");
    last.shutDown();
    vek::proc::ensureShepherd();
    const vek::time::MonotonicClock begun(true);
    EXPECT_EQ(thrown<RuntimeError>([&] { waited(unlimited); }), gone);
    EXPECT_EQ(thrown<RuntimeError>([&] { waitedUpTo(limited, vek::test::limitMs); }), gone);
    EXPECT_LT(vek::time::MonotonicClock(true) - begun, 5000);
    EXPECT_EQ(unlimited.getProcess().dwProcessId, 0u);
    EXPECT_EQ(limited.getProcess().dwProcessId, 0u);
    EXPECT_THROW(waited(last.children[0]), RuntimeError);
    end.set();
}

TEST_F(ShepherdEnd, NewShepherdWatchesLikeTheFormer) {
    const NamedEvent end;
    Child child;
    for (int life = 0; life < 5; ++life) {
        const std::string code = std::to_string(20 + life);
        // Two, so that the second interrupts the system's wait.
        Child second;
        startWaiting(child, end, code);
        prepare(second, {"exit", code});
        second.start();
        EXPECT_EQ(std::to_string(waited(second).code), code);
        end.set();
        EXPECT_EQ(std::to_string(waited(child).code), code);
        // A result that nobody collects goes with its shepherd.
        Child uncollected;
        prepare(uncollected, {"exit", "1"});
        uncollected.start();
        ASSERT_TRUE(hasEnded(uncollected));
        const std::uint32_t former = currentShepherd()->getNumber();
        vek::proc::shutdownShepherd();
        EXPECT_EQ(currentShepherd(), nullptr);
        vek::proc::ensureShepherd();
        EXPECT_NE(currentShepherd()->getNumber(), former);
        EXPECT_THROW(waited(uncollected), RuntimeError);
    }
}

TEST_F(ShepherdEnd, ThreadsInWaitLeaveWithAnExceptionBeforeItIsDeleted) {
    for (int round = 0; round < 5; ++round) {
        const NamedEvent end;
        LastChildren last;
        constexpr int count = 6;
        std::array<Child, count> children;
        for (Child& child : children) {
            startWaiting(child, end, "1");
        }
        std::atomic<int> left = 0;
        std::vector<std::thread> threads;
        for (int i = 0; i < count; ++i) {
            threads.emplace_back([&, i] {
                Child& child = children[static_cast<std::size_t>(i)];
                const std::string text = thrown<RuntimeError>([&] {
                    // With and without a time-out.
                    if (i % 2 == 0) {
                        waited(child);
                    } else {
                        waitedUpTo(child, vek::test::limitMs);
                    }
                });
                left += text == gone ? 1 : 0;
            });
        }
        Sleep(round % 2 == 0 ? 50 : 0);
        last.shutDown();
        EXPECT_EQ(currentShepherd(), nullptr);
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(left, count);
        for (const Child& child : children) {
            EXPECT_EQ(child.getProcess().dwProcessId, 0u);
        }
        end.set();
    }
}

TEST_F(ShepherdEnd, ResultThatCameInTimeIsHandedOutAtTheEnd) {
    const NamedEvent end;
    Child child;
    startWaiting(child, end, "5");
    Sleep(100);
    std::uint32_t code = 0;
    std::thread waiting([&] { code = waited(child).code; });
    Sleep(50);
    std::thread stopping(vek::proc::shutdownShepherd);
    end.set();
    stopping.join();
    waiting.join();
    EXPECT_EQ(code, 5u);
}

TEST_F(ShepherdEnd, WaitsAndStartsOfManyThreadsEndWithIt) {
    std::atomic<bool> ending = false;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            while (!ending) {
                Child child;
                try {
                    prepare(child, {"exit", "6"});
                    child.start();
                    wrong += waited(child).code == 6 ? 0 : 1;
                } catch (const RuntimeError& error) {
                    wrong += std::string(error.what()) == gone ? 0 : 1;
                }
            }
        });
    }
    for (int i = 0; i < 20; ++i) {
        Sleep(20);
        vek::proc::shutdownShepherd();
    }
    ending = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

TEST_F(ShepherdEnd, SystemWithoutConditionVariablesStartsNoChildAndNoShepherd) {
    vek::SharedLib without;
    without.load("msvcrt", 0);
    vek::thread::resetConditionFunctions();
    vek::thread::resolveConditionFunctions(without);
    Child child;
    prepare(child, {"exit", "0"});
    const std::string text = thrown<RuntimeError>([&] { child.start(); });
    vek::thread::resetConditionFunctions();
    EXPECT_EQ(text, "Child processes need the system's condition variables");
    EXPECT_EQ(currentShepherd(), nullptr);
    EXPECT_EQ(child.getProcess().dwProcessId, 0u);
    child.start();
    EXPECT_TRUE(waited(child).succeeded());
}

}  // namespace
