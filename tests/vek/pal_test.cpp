#include "vek/pal.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <exception>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/open_handles.h"
#include "tests/support/replaced_import.h"
#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/null_device.h"
#include "vek/net/winsock.h"
#include "vek/proc/child.h"
#include "vek/proc/shepherd.h"
#include "vek/thread/condition.h"
#include "vek/thread/condition_functions.h"
#include "vek/thread/read_write_functions.h"
#include "vek/thread/thread.h"
#include "vek/time/clock_source.h"

namespace {

using vek::VekPal;

bool winsockStands() {
    const SOCKET made = socket(AF_INET, SOCK_DGRAM, 0);
    if (made == INVALID_SOCKET) {
        return false;
    }
    closesocket(made);
    return true;
}

TEST(VekPal, MakesEverythingReadyAndTakesItBack) {
    EXPECT_EQ(vek::thread::nativeConditions(), nullptr);
    {
        const VekPal pal(false, 0, 4, nullptr);
        EXPECT_EQ(VekPal::current(), &pal);
        EXPECT_NE(vek::thread::nativeConditions(), nullptr);
        EXPECT_NE(vek::thread::nativeReadWriteLocks(), nullptr);
        ASSERT_NE(vek::fs::nullInput(), nullptr);
        EXPECT_TRUE(vek::fs::nullOutput()->isOpen());
        EXPECT_TRUE(vek::time::clockState().performanceCounterAvailable);
        EXPECT_NE(vek::time::clockState().clockOrigin, 0);
        EXPECT_TRUE(winsockStands());
        EXPECT_NE(vek::net::recvMsgFunction(), nullptr);
    }
    EXPECT_EQ(VekPal::current(), nullptr);
    EXPECT_EQ(vek::fs::nullInput(), nullptr);
    EXPECT_EQ(vek::fs::nullOutput(), nullptr);
    EXPECT_FALSE(winsockStands());
    EXPECT_EQ(vek::thread::nativeConditions(), nullptr);
}

TEST(VekPal, InstallsTheTerminateHandlerAndLeavesItThere) {
    std::set_terminate(std::abort);
    { const VekPal pal(false, 0, 4, nullptr); }
    EXPECT_NE(std::get_terminate(), std::abort);
}

TEST(VekPal, EmptySwitchesInTheEnvironmentCountAsPresent) {
    constexpr const char* switches[] = {"VEKPAL_NO_TERMINATE_HANDLER", "VEK_NO_COLOR",
                                        "VEK_FORCE_COLOR"};
    for (const char* name : switches) {
        SetEnvironmentVariableA(name, "");
    }
    std::set_terminate(std::abort);
    EXPECT_NO_THROW(VekPal(false, 0, 4, nullptr));
    EXPECT_EQ(std::get_terminate(), std::abort);
    for (const char* name : switches) {
        SetEnvironmentVariableA(name, nullptr);
    }
}

TEST(VekPal, SecondReplacesTheFirstAndEitherEndLeavesNone) {
    const auto first = std::make_unique<VekPal>(false, 0, 4, nullptr);
    {
        const VekPal second(false, 0, 4, nullptr);
        EXPECT_EQ(VekPal::current(), &second);
    }
    EXPECT_EQ(VekPal::current(), nullptr);
    VekPal::setCurrent(first.get());
    EXPECT_EQ(VekPal::current(), first.get());
}

TEST(VekPal, ThousandStartsAndStopsLeaveNoHandle) {
    { const VekPal warmUp(true, 0, 4, nullptr); }
    const std::size_t before = support::openHandles().size();
    for (int i = 0; i < 1000; ++i) {
        const VekPal pal(true, 0, 4, nullptr);
    }
    EXPECT_EQ(support::openHandles().size(), before);
}

TEST(VekPal, ConditionsWorkInEveryLife) {
    for (int life = 0; life < 2; ++life) {
        const VekPal pal(false, 0, 4, nullptr);
        vek::thread::Condition condition;
        EXPECT_NO_THROW(condition.wakeOne());
    }
}

// The shepherd of the child processes.

// A child that ends when `end` is set.
class WaitingChild {
  public:
    explicit WaitingChild(vek::proc::IChildCallback* callback = nullptr) {
        child.setArguments({vek::programDirectory() + "\\proc_child.exe", "wait", name, "0"}, true);
        child.setNotifyCallback(callback);
        child.start();
    }
    ~WaitingChild() {
        CloseHandle(child.getProcess().hProcess);
        CloseHandle(child.getProcess().hThread);
        CloseHandle(event);
    }
    WaitingChild(const WaitingChild&) = delete;
    WaitingChild& operator=(const WaitingChild&) = delete;

    void end() { SetEvent(event); }
    bool hasEnded() const {
        return WaitForSingleObject(child.getProcess().hProcess, 0) == WAIT_OBJECT_0;
    }

  private:
    const std::string name = "vek-pal-test-" + std::to_string(GetCurrentProcessId());
    const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, name.c_str());
    vek::proc::Child child;
};

// There is no way to see that the shepherd waits for a child. If it is stopped earlier it ends at
// once, without the child.
void letTheShepherdWait() {
    Sleep(500);
}

TEST(VekPal, StartsNoShepherd) {
    const VekPal pal(false, 0, 4, nullptr);
    EXPECT_EQ(vek::proc::currentShepherd(), nullptr);
    EXPECT_EQ(vek::thread::Thread::liveCount(), 0u);
}

TEST(VekPal, StopsTheShepherdAtItsEnd) {
    for (int life = 0; life < 2; ++life) {
        const auto pal = std::make_unique<VekPal>(false, 0, 4, nullptr);
        vek::proc::ensureShepherd();
        EXPECT_NE(vek::proc::currentShepherd(), nullptr);
    }
    EXPECT_EQ(vek::proc::currentShepherd(), nullptr);
    EXPECT_EQ(vek::thread::Thread::liveCount(), 0u);
}

TEST(VekPal, EndLastsUntilTheEndOfARunningChild) {
    auto pal = std::make_unique<VekPal>(false, 0, 4, nullptr);
    WaitingChild child;
    letTheShepherdWait();
    std::thread ending([&] {
        Sleep(300);
        EXPECT_NE(VekPal::current(), nullptr);
        child.end();
    });
    pal.reset();
    EXPECT_TRUE(child.hasEnded());
    EXPECT_EQ(vek::proc::currentShepherd(), nullptr);
    ending.join();
}

TEST(VekPal, StopsTheShepherdAheadOfWhatItsCallbacksMayUse) {
    struct Callback final : vek::proc::IChildCallback {
        void childExited(vek::proc::Child&) override {
            allStands = winsockStands() && vek::fs::nullOutput() != nullptr &&
                        vek::fs::nullInput() != nullptr &&
                        vek::thread::nativeConditions() != nullptr && VekPal::current() != nullptr;
        }
        bool allStands = false;
    } callback;
    auto pal = std::make_unique<VekPal>(true, 0, 4, nullptr);
    WaitingChild child(&callback);
    letTheShepherdWait();
    std::thread ending([&] {
        Sleep(200);
        child.end();
    });
    pal.reset();
    EXPECT_TRUE(callback.allStands);
    ending.join();
}

// Quit events.

struct Quitter final : vek::VekPalInit {
    explicit Quitter(std::vector<Quitter*>& log, bool failing = false)
        : told(log), throwing(failing) {}
    void onQuit() override {
        told.push_back(this);
        if (throwing) {
            throw vek::RuntimeError("outer", vek::RuntimeError("inner"));
        }
    }
    std::vector<Quitter*>& told;
    bool throwing;
};

TEST(VekPal, TellsItsQuitObjectsInTheOrderOfTheirAddresses) {
    VekPal pal(false, 0, 4, nullptr);
    std::vector<Quitter*> told;
    Quitter objects[] = {Quitter(told), Quitter(told), Quitter(told)};
    pal.addQuitObject(objects[2]);
    pal.addQuitObject(objects[0]);
    pal.addQuitObject(objects[1]);
    pal.addQuitObject(objects[0]);
    pal.onQuit();
    EXPECT_EQ(told, (std::vector<Quitter*>{&objects[0], &objects[1], &objects[2]}));
}

TEST(VekPal, ExceptionOfAQuitObjectEndsTheRoundAndIsReported) {
    VekPal pal(false, 0, 4, nullptr);
    std::vector<Quitter*> told;
    Quitter objects[] = {Quitter(told), Quitter(told, true), Quitter(told)};
    for (Quitter& object : objects) {
        pal.addQuitObject(object);
    }
    testing::internal::CaptureStderr();
    pal.onQuit();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error processing quit event:\n\nouter\ninner\n\n");
    EXPECT_EQ(told, (std::vector<Quitter*>{&objects[0], &objects[1]}));
    // The lock is free again.
    testing::internal::CaptureStderr();
    pal.onQuit();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(told.size(), 4u);
}

TEST(VekPal, QuitObjectThatRaisesTheEventAgainIsReportedAndTheLockIsFreeAfterwards) {
    VekPal pal(false, 0, 4, nullptr);
    struct Again final : vek::VekPalInit {
        explicit Again(VekPal& raised) : raisedPal(raised) {}
        void onQuit() override {
            ++calls;
            raisedPal.onQuit();
        }
        VekPal& raisedPal;
        std::atomic<int> calls = 0;
    } again(pal);
    struct Adding final : vek::VekPalInit {
        explicit Adding(VekPal& changed) : changedPal(changed) {}
        void onQuit() override { changedPal.addQuitObject(*this); }
        VekPal& changedPal;
    } adding(pal);
    pal.addQuitObject(again);
    testing::internal::CaptureStderr();
    pal.onQuit();
    const std::string report = testing::internal::GetCapturedStderr();
    EXPECT_EQ(report.find("Error processing quit event:\n\n"), 0u);
    EXPECT_NE(report.find("(1131)"), std::string::npos) << report;
    EXPECT_EQ(again.calls, 1);
    testing::internal::CaptureStderr();
    // On another thread: this one could take the lock again even if it held it.
    std::thread([&] { pal.onQuit(); }).join();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(again.calls, 2);

    VekPal other(false, 0, 4, nullptr);
    Adding toOther(other);
    other.addQuitObject(toOther);
    testing::internal::CaptureStderr();
    other.onQuit();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("(1131)"), std::string::npos);
    std::thread([&] { other.addQuitObject(adding); }).join();
}

// A constructor that fails.

int WSAAPI failStart(WORD, LPWSADATA) {
    return WSASYSNOTREADY;
}

BOOL WINAPI failHandler(PHANDLER_ROUTINE, BOOL) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return FALSE;
}

HANDLE WINAPI failOpen(LPCSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
    SetLastError(ERROR_TOO_MANY_OPEN_FILES);
    return INVALID_HANDLE_VALUE;
}

TEST(VekPal, ConstructorThatFailsUndoesEverything) {
    { const VekPal warmUp(true, 0, 4, nullptr); }
    const std::size_t before = support::openHandles().size();
    {
        const support::ReplacedImport<decltype(&WSAStartup)> replaced("WSAStartup", failStart);
        EXPECT_THROW(VekPal(true, 0, 4, nullptr), vek::NetError);
    }
    {
        const support::ReplacedImport<decltype(&SetConsoleCtrlHandler)> replaced(
            "SetConsoleCtrlHandler", failHandler);
        EXPECT_THROW(VekPal(true, 0, 4, nullptr), vek::OsError);
    }
    {
        const support::ReplacedImport<decltype(&CreateFileA)> replaced("CreateFileA", failOpen);
        EXPECT_THROW(VekPal(true, 0, 4, nullptr), vek::FsError);
    }
    EXPECT_EQ(VekPal::current(), nullptr);
    EXPECT_EQ(vek::fs::nullInput(), nullptr);
    EXPECT_EQ(vek::fs::nullOutput(), nullptr);
    EXPECT_FALSE(winsockStands());
    EXPECT_EQ(support::openHandles().size(), before);
}

TEST(VekPal, SecondWhoseConstructorFailsLeavesTheFirstUsable) {
    const VekPal first(false, 0, 4, nullptr);
    const auto works = [&first] {
        return VekPal::current() == &first && winsockStands() && vek::fs::nullInput() != nullptr &&
               vek::fs::nullInput()->isOpen() && vek::fs::nullOutput() != nullptr &&
               vek::fs::nullOutput()->isOpen();
    };
    {
        const support::ReplacedImport<decltype(&WSAStartup)> replaced("WSAStartup", failStart);
        EXPECT_THROW(VekPal(true, 0, 4, nullptr), vek::NetError);
    }
    EXPECT_TRUE(works());
    {
        const support::ReplacedImport<decltype(&CreateFileA)> replaced("CreateFileA", failOpen);
        EXPECT_THROW(VekPal(false, 0, 4, nullptr), vek::FsError);
    }
    EXPECT_TRUE(works());
}

// The end while threads wait for children.

TEST(VekPal, EndLetsThreadsInWaitLeaveWithAnException) {
    for (int round = 0; round < 3; ++round) {
        auto pal = std::make_unique<VekPal>(false, 0, 4, nullptr);
        const std::string name =
            "vek-pal-wait-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(round);
        const HANDLE end = CreateEventA(nullptr, TRUE, FALSE, name.c_str());
        vek::proc::Child waitedFor;
        waitedFor.setArguments({vek::programDirectory() + "\\proc_child.exe", "wait", name, "0"},
                               true);
        waitedFor.start();
        // The first exit after the request to stop lets the end return.
        std::array<vek::proc::Child, 3> last;
        for (std::size_t i = 0; i < last.size(); ++i) {
            const std::string delayMs[] = {"300", "2000", "8000"};
            last[i].setArguments(
                {vek::programDirectory() + "\\proc_child.exe", "sleep", delayMs[i], "0"}, true);
            last[i].start();
        }
        std::string text;
        std::thread waiting([&] {
            vek::proc::ExitStatus status;
            try {
                waitedFor.wait(status);
            } catch (const vek::RuntimeError& error) {
                text = error.what();
            }
        });
        Sleep(50);
        pal.reset();
        waiting.join();
        EXPECT_EQ(text, "The shepherd of this child is gone");
        SetEvent(end);
        CloseHandle(end);
        for (const vek::proc::Child& child : last) {
            CloseHandle(child.getProcess().hProcess);
            CloseHandle(child.getProcess().hThread);
        }
    }
}

TEST(VekPal, ForkHandlersAreTakenAndNeverCalled) {
    struct Handler final : vek::IForkHandler {
        void afterFork() override { called = true; }
        bool called = false;
    } handler;
    {
        VekPal pal(false, 0, 4, nullptr);
        pal.registerForkHandler(handler);
    }
    EXPECT_FALSE(handler.called);
}

}  // namespace
