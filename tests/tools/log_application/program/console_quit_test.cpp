#include "tools/log_application/program/console_quit.h"

#include <atomic>
#include <initializer_list>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

#include "tests/vek/net/loopback.h"

namespace {

using log_application::ConsoleQuit;
using log_application::StopSignal;

class ConsoleQuitTest : public vek::test::WinsockTest {
  protected:
    StopSignal stop;
    std::optional<ConsoleQuit> quit{std::in_place, stop};
};

TEST_F(ConsoleQuitTest, CtrlCAndCtrlBreakRequestTheStopAndAreHandled) {
    EXPECT_NE(ConsoleQuit::handle(CTRL_C_EVENT), 0);
    EXPECT_TRUE(stop.isRequested());
    StopSignal other;
    quit.reset();
    const ConsoleQuit otherQuit(other);
    EXPECT_NE(ConsoleQuit::handle(CTRL_BREAK_EVENT), 0);
    EXPECT_TRUE(other.isRequested());
}

TEST_F(ConsoleQuitTest, AnEventThatComesTooLateTouchesNothing) {
    quit.reset();
    EXPECT_NE(ConsoleQuit::handle(CTRL_C_EVENT), 0);
    EXPECT_FALSE(stop.isRequested());
}

TEST_F(ConsoleQuitTest, TheEndOfTheConsoleWaitsForTheEndOfTheProgram) {
    for (const DWORD kind :
         std::initializer_list<DWORD>{CTRL_CLOSE_EVENT, CTRL_LOGOFF_EVENT, CTRL_SHUTDOWN_EVENT}) {
        StopSignal signal;
        quit.reset();
        quit.emplace(signal);
        std::atomic<bool> isHandled = false;
        std::thread system([kind, &isHandled] {
            ConsoleQuit::handle(kind);
            isHandled = true;
        });
        EXPECT_TRUE(signal.waitFor(20'000));
        Sleep(200);
        EXPECT_FALSE(isHandled);
        const DWORD start = GetTickCount();
        quit.reset();
        system.join();
        EXPECT_LT(GetTickCount() - start, 4000u);
    }
}

TEST_F(ConsoleQuitTest, TheEndOfTheConsoleDoesNotWaitForGood) {
    const DWORD start = GetTickCount();
    EXPECT_NE(ConsoleQuit::handle(CTRL_CLOSE_EVENT), 0);
    EXPECT_GE(GetTickCount() - start, 4400u);
}

}  // namespace
