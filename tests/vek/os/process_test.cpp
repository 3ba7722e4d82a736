#include "vek/os/process.h"

#include <atomic>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "tests/support/replaced_import.h"
#include "tests/vek/os/test_support.h"
#include "tests/vek/temporary_directory.h"
#include "vek/os/objects.h"

namespace {

using vek::test::childCommand;
using vek::test::OwnedHandle;
using vek::test::uniqueName;

// An upper bound for what takes milliseconds.
constexpr DWORD patienceMs = 30000;

HANDLE startChild(const std::string& arguments) {
    HANDLE process = nullptr;
    EXPECT_EQ(vek::os::runProcessNoWait(childCommand(arguments).c_str(), SW_HIDE, &process), 1);
    return process;
}

bool ends(HANDLE process) {
    return WaitForSingleObject(process, patienceMs) == WAIT_OBJECT_0;
}

// Children that live until the event is signalled, which the end of the test does at the latest.
class Process : public vek::test::TemporaryDirectoryTest {
  protected:
    Process() { EXPECT_EQ(vek::os::createEvent(event.out(), eventName.c_str(), 0), 1); }
    ~Process() override { SetEvent(event.get()); }

    std::string lasting(int exitCode) const {
        return "wait-event " + eventName + " " + std::to_string(exitCode);
    }

    const std::string eventName = uniqueName("go-on");
    OwnedHandle event;
};

using RunProcess = Process;
using RunProcessNoWait = Process;
using ProcessIsRunning = Process;
using WaitForProcess = Process;
using TerminateProcessTest = Process;

TEST_F(RunProcess, WaitsForTheEndAndTellsTheExitCode) {
    std::uint32_t exitCode = 12345;
    EXPECT_EQ(vek::os::runProcess(childCommand("exit 0").c_str(), SW_HIDE, &exitCode), 1);
    EXPECT_EQ(exitCode, 0u);
    EXPECT_EQ(vek::os::runProcess(childCommand("exit 37125").c_str(), SW_HIDE, &exitCode), 1);
    EXPECT_EQ(exitCode, 37125u);
    EXPECT_EQ(vek::os::runProcess(childCommand("exit 4294967295").c_str(), SW_HIDE, &exitCode), 1);
    EXPECT_EQ(exitCode, 0xFFFFFFFFu);
    EXPECT_EQ(vek::os::runProcess(childCommand("exit 5").c_str(), SW_HIDE, nullptr), 1);
}

// The calls that runProcess makes while it waits, and the flags that it starts with.
std::string calls;
int looksAtARunningProcess = 0;
DWORD creationFlags = 0;
decltype(&CreateProcessA) originalCreate = nullptr;

BOOL WINAPI recordLook(HANDLE, LPDWORD code) {
    calls += "look ";
    *code = looksAtARunningProcess-- > 0 ? STILL_ACTIVE : 7;
    return TRUE;
}

void WINAPI recordSleep(DWORD milliseconds) {
    calls += "sleep " + std::to_string(milliseconds) + " ";
}

BOOL WINAPI recordFlags(LPCSTR program, LPSTR commandLine, LPSECURITY_ATTRIBUTES ofProcess,
                        LPSECURITY_ATTRIBUTES ofThread, BOOL inherit, DWORD flags,
                        LPVOID environment, LPCSTR directory, LPSTARTUPINFOA startup,
                        LPPROCESS_INFORMATION started) {
    creationFlags = flags;
    return originalCreate(program, commandLine, ofProcess, ofThread, inherit, flags, environment,
                          directory, startup, started);
}

// Runs a process whose exit is seen at the look after `looks` others.
std::uint32_t exitCodeAfter(int looks) {
    const support::ReplacedImport<decltype(&GetExitCodeProcess)> look("GetExitCodeProcess",
                                                                      recordLook);
    const support::ReplacedImport<decltype(&Sleep)> sleep("Sleep", recordSleep);
    calls.clear();
    looksAtARunningProcess = looks;
    std::uint32_t exitCode = 0;
    EXPECT_EQ(vek::os::runProcess(childCommand("exit 0").c_str(), SW_HIDE, &exitCode), 1);
    return exitCode;
}

TEST_F(RunProcess, SleepsAfterEachLookAtTheExitCode) {
    EXPECT_EQ(exitCodeAfter(2), 7u);
    EXPECT_EQ(calls, "look sleep 50 look sleep 50 look sleep 50 ");
    // Also after the only one.
    EXPECT_EQ(exitCodeAfter(0), 7u);
    EXPECT_EQ(calls, "look sleep 50 ");
}

TEST_F(RunProcess, StartsWithNormalPriority) {
    const support::ReplacedImport<decltype(&CreateProcessA)> create("CreateProcessA", recordFlags);
    originalCreate = create.getOriginal();
    for (const bool waits : {true, false}) {
        creationFlags = 0;
        if (waits) {
            EXPECT_EQ(vek::os::runProcess(childCommand("exit 0").c_str(), SW_HIDE, nullptr), 1);
        } else {
            EXPECT_EQ(vek::os::runProcessNoWait(childCommand("exit 0").c_str(), SW_HIDE, nullptr),
                      1);
        }
        EXPECT_EQ(creationFlags, static_cast<DWORD>(NORMAL_PRIORITY_CLASS));
    }
}

TEST_F(RunProcess, DoesNotReturnWhileTheProcessRuns) {
    std::atomic<bool> returned = false;
    std::thread runner([this, &returned] {
        std::uint32_t exitCode = 0;
        EXPECT_EQ(vek::os::runProcess(childCommand(lasting(6)).c_str(), SW_HIDE, &exitCode), 1);
        EXPECT_EQ(exitCode, 6u);
        returned = true;
    });
    Sleep(300);
    EXPECT_FALSE(returned);
    SetEvent(event.get());
    runner.join();
}

TEST_F(RunProcess, Bit0x10000LeavesOutTheWait) {
    std::uint32_t exitCode = 12345;
    // The child ends after the test only.
    EXPECT_EQ(vek::os::runProcess(childCommand(lasting(0)).c_str(), SW_HIDE | 0x10000, &exitCode),
              1);
    EXPECT_EQ(exitCode, 12345u);
}

TEST_F(RunProcess, LowBitsOfTheShowModeReachTheProgram) {
    EXPECT_EQ(vek::os::runProcess(childCommand("report-start " + path("started")).c_str(),
                                  0xABCE0000 | SW_SHOWMAXIMIZED, nullptr),
              1);
    EXPECT_EQ(readFile("started"), "flags=1 show=3 priority=32");
}

TEST_F(RunProcess, HiddenIsMinimisedAndWaits) {
    EXPECT_EQ(vek::os::runProcessHidden(childCommand("report-start " + path("started")).c_str()),
              1);
    EXPECT_EQ(readFile("started"), "flags=1 show=2 priority=32");
}

TEST_F(RunProcess, HandlesAreNotInherited) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    const OwnedHandle inheritable(CreateEventA(&inherited, FALSE, FALSE, nullptr));
    const auto value = reinterpret_cast<std::uintptr_t>(inheritable.get());
    std::uint32_t exitCode = 12345;
    ASSERT_EQ(vek::os::runProcess(childCommand("use-event " + std::to_string(value)).c_str(),
                                  SW_HIDE, &exitCode),
              1);
    EXPECT_EQ(WaitForSingleObject(inheritable.get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
}

TEST_F(RunProcess, CommandLineOfTheCallerIsNotWrittenTo) {
    const std::string before = childCommand("exit 0");
    const std::string command = before;
    EXPECT_EQ(vek::os::runProcess(command.c_str(), SW_HIDE, nullptr), 1);
    EXPECT_EQ(command, before);
}

TEST_F(RunProcess, FailureToStartGivesZeroAndTheSystemsError) {
    writeFile("text.exe", "not a program, though it is long enough to look like one at first");
    const struct {
        std::string command;
        DWORD error;
    } rows[] = {
        {"\"" + path("missing.exe") + "\"", ERROR_FILE_NOT_FOUND},
        {"\"" + path("text.exe") + "\"", ERROR_BAD_EXE_FORMAT},
    };
    for (const auto& row : rows) {
        std::uint32_t exitCode = 12345;
        SetLastError(0);
        EXPECT_EQ(vek::os::runProcess(row.command.c_str(), SW_HIDE, &exitCode), 0);
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(exitCode, 12345u);
        SetLastError(0);
        EXPECT_EQ(vek::os::runProcessHidden(row.command.c_str()), 0);
        EXPECT_EQ(GetLastError(), row.error);
        HANDLE process = INVALID_HANDLE_VALUE;
        SetLastError(0);
        EXPECT_EQ(vek::os::runProcessNoWait(row.command.c_str(), SW_HIDE, &process), 0);
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(process, nullptr);
    }
}

TEST_F(RunProcess, HostileCommandLinesStartNothing) {
    for (const std::string& command :
         {std::string(), std::string("   "), std::string("\""), std::string(100000, 'x')}) {
        EXPECT_EQ(vek::os::runProcess(command.c_str(), SW_HIDE, nullptr), 0);
        EXPECT_EQ(vek::os::runProcessNoWait(command.c_str(), SW_HIDE, nullptr), 0);
    }
    EXPECT_EQ(vek::os::runProcess(nullptr, SW_HIDE, nullptr), 0);
    EXPECT_EQ(vek::os::runProcessHidden(nullptr), 0);
    EXPECT_EQ(vek::os::runProcessNoWait(nullptr, SW_HIDE, nullptr), 0);
}

TEST_F(RunProcessNoWait, HandsOverTheProcess) {
    OwnedHandle process(startChild(lasting(8)));
    EXPECT_EQ(WaitForSingleObject(process.get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
    SetEvent(event.get());
    ASSERT_TRUE(ends(process.get()));
    DWORD exitCode = 0;
    EXPECT_NE(GetExitCodeProcess(process.get(), &exitCode), 0);
    EXPECT_EQ(exitCode, 8u);
}

TEST_F(RunProcessNoWait, ShowModeReachesTheProgram) {
    const OwnedHandle process(startChild("report-start " + path("hidden")));
    ASSERT_TRUE(ends(process.get()));
    EXPECT_EQ(readFile("hidden"), "flags=1 show=0 priority=32");
}

TEST_F(RunProcessNoWait, LeavesNoHandleOpenButTheOneHandedOver) {
    // The first start may open what the system keeps.
    OwnedHandle(startChild("exit 0"));
    const int handles = vek::test::handlesOfThisProcess();
    const std::string command = childCommand("exit 0");
    EXPECT_EQ(vek::os::runProcessNoWait(command.c_str(), SW_HIDE, nullptr), 1);
    EXPECT_EQ(vek::os::runProcess(command.c_str(), SW_HIDE, nullptr), 1);
    EXPECT_EQ(vek::os::runProcess(command.c_str(), SW_HIDE | vek::os::runWithoutWait, nullptr), 1);
    EXPECT_EQ(vek::test::handlesOfThisProcess(), handles);
    const OwnedHandle process(startChild("exit 0"));
    EXPECT_EQ(vek::test::handlesOfThisProcess(), handles + 1);
}

TEST_F(ProcessIsRunning, TellsUntilTheEnd) {
    const OwnedHandle process(startChild(lasting(0)));
    EXPECT_EQ(vek::os::processIsRunning(process.get()), 1);
    SetEvent(event.get());
    ASSERT_TRUE(ends(process.get()));
    EXPECT_EQ(vek::os::processIsRunning(process.get()), 0);
}

// Deliberate: the exit code is all that is looked at.
TEST_F(ProcessIsRunning, OneThatEndedWith259CountsAsRunning) {
    const OwnedHandle process(startChild("exit 259"));
    ASSERT_TRUE(ends(process.get()));
    EXPECT_EQ(vek::os::processIsRunning(process.get()), 1);
}

TEST_F(ProcessIsRunning, BadHandleIsNotRunning) {
    SetLastError(0);
    EXPECT_EQ(vek::os::processIsRunning(nullptr), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
}

TEST_F(WaitForProcess, WaitsTellsTheExitCodeAndClosesTheHandle) {
    OwnedHandle process(startChild(lasting(37125)));
    OwnedHandle second(startChild("exit 1"));
    std::thread signaller([this] {
        Sleep(200);
        SetEvent(event.get());
    });
    const ULONGLONG start = GetTickCount64();
    const HANDLE handle = process.release();
    std::uint32_t exitCode = 12345;
    EXPECT_EQ(vek::os::waitForProcess(handle, &exitCode), 1);
    EXPECT_GE(GetTickCount64() - start, 180u);
    EXPECT_EQ(exitCode, 37125u);
    signaller.join();
    DWORD flags = 0;
    EXPECT_EQ(GetHandleInformation(handle, &flags), 0) << "the handle is still open";
    const HANDLE other = second.release();
    EXPECT_EQ(vek::os::waitForProcess(other, nullptr), 1);
    EXPECT_EQ(GetHandleInformation(other, &flags), 0);
}

TEST_F(WaitForProcess, BadHandleGivesOneAndStoresNothing) {
    std::uint32_t exitCode = 12345;
    EXPECT_EQ(vek::os::waitForProcess(nullptr, &exitCode), 1);
    EXPECT_EQ(exitCode, 12345u);
    // A handle that is open, but not that of a process, is closed, too.
    const HANDLE noProcess = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    EXPECT_EQ(vek::os::waitForProcess(noProcess, &exitCode), 1);
    EXPECT_EQ(exitCode, 12345u);
    DWORD flags = 0;
    EXPECT_EQ(GetHandleInformation(noProcess, &flags), 0);
}

// Deliberate, as with processIsRunning. Closing the handle behind its back is the one way to end
// such a wait.
TEST_F(WaitForProcess, WaitForOneThatEndedWith259NeverEnds) {
    const HANDLE process = startChild("exit 259");
    ASSERT_TRUE(ends(process));
    std::uint32_t exitCode = 12345;
    std::atomic<bool> returned = false;
    std::thread waiter([process, &exitCode, &returned] {
        EXPECT_EQ(vek::os::waitForProcess(process, &exitCode), 1);
        returned = true;
    });
    Sleep(300);
    EXPECT_FALSE(returned);
    CloseHandle(process);
    waiter.join();
    EXPECT_EQ(exitCode, 12345u);
}

TEST_F(TerminateProcessTest, EndsTheProcessWithZero) {
    const OwnedHandle process(startChild(lasting(9)));
    EXPECT_EQ(vek::os::terminateProcess(process.get()), 1);
    ASSERT_TRUE(ends(process.get()));
    DWORD exitCode = 12345;
    EXPECT_NE(GetExitCodeProcess(process.get(), &exitCode), 0);
    EXPECT_EQ(exitCode, 0u);
}

TEST_F(TerminateProcessTest, BadHandleIsTheSystemsError) {
    SetLastError(0);
    EXPECT_EQ(vek::os::terminateProcess(nullptr), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
}

}  // namespace
