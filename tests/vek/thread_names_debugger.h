// What a debugger is told of the names of threads, by a test that runs in a process of its own.
#pragma once

#include <array>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "vek/base/windows.h"

namespace vek::test {

inline constexpr DWORD nameThreadException = 0x406D1388;

// One naming that the debugger saw.
struct Naming {
    DWORD type = 0;
    std::string name;
    bool fromTheNamedThread = false;
    DWORD flags = 1;
};

struct Debugged {
    std::vector<Naming> namings;
    DWORD exitCode = 0;
};

inline std::string textIn(HANDLE process, ULONG_PTR address) {
    std::string text;
    char ch = 0;
    while (ReadProcessMemory(process, reinterpret_cast<const void*>(address + text.size()), &ch, 1,
                             nullptr) != 0 &&
           ch != '\0') {
        text += ch;
    }
    return text;
}

// Windows closes the handles of debug events once the process has ended, Wine doesn't.
inline void closeThoseStillOpen(const std::set<HANDLE>& handles) {
    for (const HANDLE handle : handles) {
        DWORD flags = 0;
        if (GetHandleInformation(handle, &flags) != 0) {
            CloseHandle(handle);
        }
    }
}

// Takes the debug events of `process` until its end.
inline Debugged debug(HANDLE process) {
    Debugged seen;
    std::set<HANDLE> handles;
    DEBUG_EVENT event = {};
    while (WaitForDebugEvent(&event, 60000) != 0) {
        DWORD answer = DBG_CONTINUE;
        if (event.dwDebugEventCode == CREATE_PROCESS_DEBUG_EVENT) {
            CloseHandle(event.u.CreateProcessInfo.hFile);
            handles.insert({event.u.CreateProcessInfo.hProcess, event.u.CreateProcessInfo.hThread});
        } else if (event.dwDebugEventCode == CREATE_THREAD_DEBUG_EVENT) {
            handles.insert(event.u.CreateThread.hThread);
        } else if (event.dwDebugEventCode == LOAD_DLL_DEBUG_EVENT) {
            CloseHandle(event.u.LoadDll.hFile);
        } else if (event.dwDebugEventCode == EXCEPTION_DEBUG_EVENT) {
            const EXCEPTION_RECORD& record = event.u.Exception.ExceptionRecord;
            if (record.ExceptionCode == nameThreadException && record.NumberParameters == 4) {
                seen.namings.push_back(
                    {.type = static_cast<DWORD>(record.ExceptionInformation[0]),
                     .name = textIn(process, record.ExceptionInformation[1]),
                     .fromTheNamedThread = record.ExceptionInformation[2] == event.dwThreadId,
                     .flags = static_cast<DWORD>(record.ExceptionInformation[3])});
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
            closeThoseStillOpen(handles);
            return seen;
        }
    }
    ADD_FAILURE() << "the process did not end in time";
    TerminateProcess(process, 1);
    return seen;
}

// Runs the test `name` of this program under a debugger. Its own outcome is the exit code.
inline Debugged debugTest(const std::string& name) {
    std::array<char, MAX_PATH> program = {};
    EXPECT_NE(GetModuleFileNameA(nullptr, program.data(), program.size()), 0u);
    std::string commandLine =
        std::string("\"") + program.data() + "\" --gtest_filter=" + name + " --gtest_brief=1";
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    if (CreateProcessA(program.data(), commandLine.data(), nullptr, nullptr, FALSE,
                       DEBUG_ONLY_THIS_PROCESS, nullptr, nullptr, &startup, &started) == 0) {
        ADD_FAILURE() << "no process: error " << GetLastError();
        return {};
    }
    Debugged seen = debug(started.hProcess);
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    return seen;
}

}  // namespace vek::test
