#include "vek/base/os_thread_name.h"

#include <array>
#include <string>

#include <gtest/gtest.h>

#include "vek/base/windows.h"

namespace {

constexpr DWORD nameThreadException = 0x406D1388;

int namingsSeen = 0;

LONG CALLBACK countNamings(EXCEPTION_POINTERS* raised) {
    if (raised->ExceptionRecord->ExceptionCode == nameThreadException) {
        ++namingsSeen;
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

LONG WINAPI goOn(EXCEPTION_POINTERS*) {
    return EXCEPTION_CONTINUE_EXECUTION;
}

// What a debugger saw of a process that it started.
struct Debugged {
    int namings = 0;
    bool fromTheNamedThread = false;
    DWORD type = 0;
    std::string name;
    DWORD flags = 1;
    DWORD exitCode = 0;
};

std::string textIn(HANDLE process, ULONG_PTR address) {
    std::string text;
    char ch = 0;
    while (ReadProcessMemory(process, reinterpret_cast<const void*>(address + text.size()), &ch, 1,
                             nullptr) != 0 &&
           ch != '\0') {
        text += ch;
    }
    return text;
}

// Takes the debug events of `process` until its end.
Debugged debug(HANDLE process) {
    Debugged seen;
    DEBUG_EVENT event = {};
    while (WaitForDebugEvent(&event, 30000) != 0) {
        DWORD answer = DBG_CONTINUE;
        if (event.dwDebugEventCode == CREATE_PROCESS_DEBUG_EVENT) {
            CloseHandle(event.u.CreateProcessInfo.hFile);
        } else if (event.dwDebugEventCode == LOAD_DLL_DEBUG_EVENT) {
            CloseHandle(event.u.LoadDll.hFile);
        } else if (event.dwDebugEventCode == EXCEPTION_DEBUG_EVENT) {
            const EXCEPTION_RECORD& record = event.u.Exception.ExceptionRecord;
            if (record.ExceptionCode == nameThreadException && record.NumberParameters == 4) {
                ++seen.namings;
                seen.type = static_cast<DWORD>(record.ExceptionInformation[0]);
                seen.name = textIn(process, record.ExceptionInformation[1]);
                seen.fromTheNamedThread = record.ExceptionInformation[2] == event.dwThreadId;
                seen.flags = static_cast<DWORD>(record.ExceptionInformation[3]);
                // The program has to manage by itself, as without a debugger.
                answer = DBG_EXCEPTION_NOT_HANDLED;
            } else if (record.ExceptionCode != EXCEPTION_BREAKPOINT) {
                answer = DBG_EXCEPTION_NOT_HANDLED;
            }
        }
        const bool ended = event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT;
        if (ended) {
            seen.exitCode = event.u.ExitProcess.dwExitCode;
        }
        ContinueDebugEvent(event.dwProcessId, event.dwThreadId, answer);
        if (ended) {
            return seen;
        }
    }
    ADD_FAILURE() << "the process did not end in time";
    TerminateProcess(process, 1);
    return seen;
}

// The process that the debugger's test starts. Its own outcome is the exit code.
TEST(OsThreadName, DISABLED_NamesItself) {
    EXPECT_EQ(vek::os::nameThread("a named thread"), 1);
}

TEST(OsThreadName, ReachesADebuggerAndTheThreadGoesOn) {
    std::array<char, MAX_PATH> program = {};
    ASSERT_NE(GetModuleFileNameA(nullptr, program.data(), program.size()), 0u);
    std::string commandLine = std::string("\"") + program.data() +
                              "\" --gtest_filter=OsThreadName.DISABLED_NamesItself "
                              "--gtest_also_run_disabled_tests --gtest_brief=1";
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    ASSERT_NE(CreateProcessA(program.data(), commandLine.data(), nullptr, nullptr, FALSE,
                             DEBUG_ONLY_THIS_PROCESS, nullptr, nullptr, &startup, &started),
              0);
    const Debugged seen = debug(started.hProcess);
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    EXPECT_EQ(seen.namings, 1);
    EXPECT_EQ(seen.type, 0x1000u);
    EXPECT_EQ(seen.name, "a named thread");
    EXPECT_TRUE(seen.fromTheNamedThread);
    EXPECT_EQ(seen.flags, 0u);
    EXPECT_EQ(seen.exitCode, 0u);
}

// An exception that no handler takes ends the process, so none may get behind the guard. The
// runtime's own threads have a handler for such exceptions in place, which would hide a missing
// guard; the test's one is asked before that and after the guard.
TEST(OsThreadName, ReachesNoOtherHandlerWithoutADebugger) {
    void* handler = AddVectoredExceptionHandler(1, countNamings);
    ASSERT_NE(handler, nullptr);
    namingsSeen = 0;
    EXPECT_EQ(vek::os::nameThread("nobody listens"), 1);
    EXPECT_EQ(vek::os::nameThread(""), 1);
    RemoveVectoredExceptionHandler(handler);
    EXPECT_EQ(namingsSeen, 0);
}

TEST(OsThreadName, LeavesNoHandlerBehind) {
    void* handler = AddVectoredExceptionHandler(1, countNamings);
    ASSERT_NE(handler, nullptr);
    vek::os::nameThread("named");
    namingsSeen = 0;
    const LPTOP_LEVEL_EXCEPTION_FILTER former = SetUnhandledExceptionFilter(goOn);
    RaiseException(nameThreadException, 0, 0, nullptr);
    SetUnhandledExceptionFilter(former);
    RemoveVectoredExceptionHandler(handler);
    EXPECT_EQ(namingsSeen, 1);
}

TEST(OsThreadName, NullNameIsRefused) {
    EXPECT_EQ(vek::os::nameThread(nullptr), 0);
}

}  // namespace
