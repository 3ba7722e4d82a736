// Console control events, on a real console.
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/pal.h"

namespace {

using vek::VekPal;

// Upper bound of each wait.
constexpr DWORD limitMs = 20000;

// Records a console control event and the thread that handles it.
class Told {
  public:
    Told() : event(CreateEventA(nullptr, FALSE, FALSE, nullptr)) {}
    ~Told() { CloseHandle(event); }
    Told(const Told&) = delete;
    Told& operator=(const Told&) = delete;

    // Called on the event's thread.
    void tell() {
        threadId = GetCurrentThreadId();
        DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &thread, 0,
                        FALSE, DUPLICATE_SAME_ACCESS);
        SetEvent(event);
    }

    // Blocks until an event has come and its thread has ended. Returns false after limitMs.
    bool wait() {
        if (WaitForSingleObject(event, limitMs) != WAIT_OBJECT_0) {
            return false;
        }
        const bool ended = WaitForSingleObject(thread, limitMs) == WAIT_OBJECT_0;
        CloseHandle(thread);
        return ended;
    }

    bool isPending() const { return WaitForSingleObject(event, 0) == WAIT_OBJECT_0; }

    DWORD threadId = 0;

  private:
    HANDLE event;
    HANDLE thread = nullptr;
};

struct Quitter final : vek::VekPalInit {
    void onQuit() override { told.tell(); }
    bool wasTold() { return told.wait(); }

    Told told;
};

TEST(ConsoleEvents, ReachTheQuitObjectsAndDoNotEndTheProgram) {
    VekPal pal(true, 0, 4, nullptr);
    Quitter quitter;
    pal.addQuitObject(quitter);
    ASSERT_NE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0) << GetLastError();
    ASSERT_TRUE(quitter.wasTold());
    EXPECT_NE(quitter.told.threadId, GetCurrentThreadId());
}

TEST(ConsoleEvents, ReachEveryObjectThatHandlesThem) {
    VekPal first(true, 0, 4, nullptr);
    VekPal second(true, 0, 4, nullptr);
    Quitter firstQuitter;
    Quitter secondQuitter;
    first.addQuitObject(firstQuitter);
    second.addQuitObject(secondQuitter);
    ASSERT_NE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0);
    EXPECT_TRUE(firstQuitter.wasTold());
    EXPECT_TRUE(secondQuitter.wasTold());
}

TEST(ConsoleEvents, HandlerStaysUntilTheLastObjectHasGone) {
    VekPal stays(true, 0, 4, nullptr);
    Quitter quitter;
    stays.addQuitObject(quitter);
    { const VekPal goes(true, 0, 4, nullptr); }
    ASSERT_NE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0);
    EXPECT_TRUE(quitter.wasTold());
}

TEST(ConsoleEvents, CanBeHandledLaterThanAtTheStart) {
    VekPal pal(false, 0, 4, nullptr);
    Quitter quitter;
    pal.addQuitObject(quitter);
    pal.enableQuitHandling();
    ASSERT_NE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0);
    EXPECT_TRUE(quitter.wasTold());
}

// Ends.

TEST(ConsoleEvents, EndWaitsUntilAnEventHasBeenHandled) {
    struct Blocking final : vek::VekPalInit {
        void onQuit() override {
            SetEvent(begun);
            WaitForSingleObject(release, limitMs);
            finished = true;
        }
        const HANDLE begun = CreateEventA(nullptr, TRUE, FALSE, nullptr);
        const HANDLE release = CreateEventA(nullptr, TRUE, FALSE, nullptr);
        std::atomic<bool> finished = false;
    } quitter;
    // Another object, so that the console handler stays installed.
    const VekPal stays(true, 0, 4, nullptr);
    auto pal = std::make_unique<VekPal>(true, 0, 4, nullptr);
    pal->addQuitObject(quitter);
    ASSERT_NE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0);
    ASSERT_EQ(WaitForSingleObject(quitter.begun, limitMs), WAIT_OBJECT_0);
    std::atomic<bool> ended = false;
    std::thread ending([&] {
        pal.reset();
        ended = true;
        EXPECT_TRUE(quitter.finished);
    });
    Sleep(100);
    EXPECT_FALSE(ended);
    SetEvent(quitter.release);
    ending.join();
}

// Another handler, which is called if VekPal's handler isn't installed.
Told* othersTold = nullptr;

BOOL WINAPI otherHandler(DWORD) {
    othersTold->tell();
    return TRUE;
}

class OtherHandler : public testing::Test {
  protected:
    OtherHandler() {
        othersTold = &told;
        SetConsoleCtrlHandler(otherHandler, TRUE);
    }
    ~OtherHandler() override { SetConsoleCtrlHandler(otherHandler, FALSE); }

    Told told;
};

TEST_F(OtherHandler, IsNotAskedWhileAnObjectHandlesEvents) {
    VekPal pal(true, 0, 4, nullptr);
    Quitter quitter;
    pal.addQuitObject(quitter);
    ASSERT_NE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0);
    EXPECT_TRUE(quitter.wasTold());
    EXPECT_FALSE(told.isPending());
}

TEST_F(OtherHandler, IsAskedWhereNoObjectHandlesEvents) {
    VekPal pal(false, 0, 4, nullptr);
    Quitter quitter;
    pal.addQuitObject(quitter);
    ASSERT_NE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0);
    EXPECT_TRUE(told.wait());
    EXPECT_FALSE(quitter.told.isPending());
}

TEST_F(OtherHandler, IsAskedAgainOnceTheLastObjectHasGone) {
    { const VekPal pal(true, 0, 4, nullptr); }
    ASSERT_NE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0);
    EXPECT_TRUE(told.wait());
}

BOOL WINAPI ignoringHandler(DWORD) {
    return TRUE;
}

TEST(ConsoleEventsAtTheEnd, EndInTheMidstOfEventsNeitherHangsNorCallsAQuitObjectLater) {
    struct Counting final : vek::VekPalInit {
        void onQuit() override {
            calls += isAlive ? 1 : 1000000;
            SwitchToThread();
        }
        std::atomic<bool> isAlive = true;
        std::atomic<int> calls = 0;
    };
    constexpr int rounds = 60;
    // For events that come too late for both objects.
    SetConsoleCtrlHandler(ignoringHandler, TRUE);
    std::vector<std::unique_ptr<Counting>> counters;
    for (int i = 0; i < rounds; ++i) {
        counters.push_back(std::make_unique<Counting>());
        Counting& counter = *counters.back();
        auto first = std::make_unique<VekPal>(true, 0, 4, nullptr);
        auto second = std::make_unique<VekPal>(true, 0, 4, nullptr);
        first->addQuitObject(counter);
        second->addQuitObject(counter);
        ASSERT_NE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0);
        // The event reaches the objects before, in the midst of, or after their ends.
        Sleep(static_cast<DWORD>(i % 4));
        if (i % 2 == 0) {
            second.reset();
        }
        first.reset();
        second.reset();
        counter.isAlive = false;
    }
    for (const auto& counter : counters) {
        EXPECT_LT(counter->calls, 1000000);
    }
}

}  // namespace
