// What console control events do to a program, on a real console.
#include <string>

#include <gtest/gtest.h>

#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/pal.h"

namespace {

using vek::VekPal;

// An upper bound for what takes an instant.
constexpr DWORD limitMs = 20000;

// Signals an event when it is told to quit.
struct Quitter final : vek::VekPalInit {
    Quitter() : told(CreateEventA(nullptr, FALSE, FALSE, nullptr)) {}
    ~Quitter() { CloseHandle(told); }
    Quitter(const Quitter&) = delete;
    Quitter& operator=(const Quitter&) = delete;
    void onQuit() override {
        thread = GetCurrentThreadId();
        SetEvent(told);
    }
    bool wasTold() const { return WaitForSingleObject(told, limitMs) == WAIT_OBJECT_0; }

    HANDLE told;
    DWORD thread = 0;
};

TEST(ConsoleEvents, ReachTheQuitObjectsAndDoNotEndTheProgram) {
    VekPal pal(true, 0, 4, nullptr);
    Quitter quitter;
    pal.addQuitObject(quitter);
    ASSERT_NE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0) << GetLastError();
    ASSERT_TRUE(quitter.wasTold());
    EXPECT_NE(quitter.thread, GetCurrentThreadId());
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

// Another handler, which is asked if the object's own is not there.
HANDLE othersTold = nullptr;

BOOL WINAPI otherHandler(DWORD) {
    SetEvent(othersTold);
    return TRUE;
}

class OtherHandler : public testing::Test {
  protected:
    OtherHandler() {
        othersTold = CreateEventA(nullptr, FALSE, FALSE, nullptr);
        SetConsoleCtrlHandler(otherHandler, TRUE);
    }
    ~OtherHandler() override {
        SetConsoleCtrlHandler(otherHandler, FALSE);
        CloseHandle(othersTold);
    }
    bool wasTold(DWORD timeoutMs) const {
        return WaitForSingleObject(othersTold, timeoutMs) == WAIT_OBJECT_0;
    }
};

TEST_F(OtherHandler, IsNotAskedWhileAnObjectHandlesEvents) {
    VekPal pal(true, 0, 4, nullptr);
    Quitter quitter;
    pal.addQuitObject(quitter);
    // By the second event the handling of the first is over.
    for (int i = 0; i < 2; ++i) {
        ASSERT_NE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0);
        EXPECT_TRUE(quitter.wasTold());
    }
    EXPECT_FALSE(wasTold(0));
}

TEST_F(OtherHandler, IsAskedWhereNoObjectHandlesEvents) {
    VekPal pal(false, 0, 4, nullptr);
    Quitter quitter;
    pal.addQuitObject(quitter);
    ASSERT_NE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0);
    EXPECT_TRUE(wasTold(limitMs));
    EXPECT_EQ(WaitForSingleObject(quitter.told, 0), static_cast<DWORD>(WAIT_TIMEOUT));
}

TEST_F(OtherHandler, IsAskedAgainOnceTheLastObjectHasGone) {
    { const VekPal pal(true, 0, 4, nullptr); }
    ASSERT_NE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0);
    EXPECT_TRUE(wasTold(limitMs));
}

}  // namespace
