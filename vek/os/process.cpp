#include "vek/os/process.h"

#include <cstdlib>
#include <cstring>
#include <memory>

namespace vek::os {

namespace {

constexpr DWORD pollMs = 50;

struct Free {
    void operator()(char* text) const { std::free(text); }
};

// Starts `commandLine`; both handles in `started` are the caller's on success.
bool start(const char* commandLine, std::uint32_t showMode, PROCESS_INFORMATION& started) {
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = static_cast<WORD>(showMode & 0xFFFF);
    // The system may write into the command line.
    const std::unique_ptr<char, Free> copy(commandLine != nullptr ? _strdup(commandLine) : nullptr);
    return copy != nullptr &&
           CreateProcessA(nullptr, copy.get(), nullptr, nullptr, FALSE, NORMAL_PRIORITY_CLASS,
                          nullptr, nullptr, &startup, &started) != 0;
}

}  // namespace

int runProcess(const char* commandLine, std::uint32_t showMode, std::uint32_t* exitCode) {
    PROCESS_INFORMATION started = {};
    if (!start(commandLine, showMode, started)) {
        return 0;
    }
    int result = 1;
    if ((showMode & runWithoutWait) == 0) {
        DWORD code = STILL_ACTIVE;
        while (result != 0 && code == STILL_ACTIVE) {
            result = GetExitCodeProcess(started.hProcess, &code) != 0 ? 1 : 0;
            Sleep(pollMs);
        }
        if (result != 0 && exitCode != nullptr) {
            *exitCode = code;
        }
    }
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    return result;
}

int runProcessHidden(const char* commandLine) {
    return runProcess(commandLine, SW_SHOWMINIMIZED, nullptr);
}

int runProcessNoWait(const char* commandLine, std::uint32_t showMode, HANDLE* process) {
    PROCESS_INFORMATION started = {};
    const bool running = start(commandLine, showMode, started);
    if (process != nullptr) {
        *process = started.hProcess;
    }
    if (!running) {
        return 0;
    }
    CloseHandle(started.hThread);
    if (process == nullptr) {
        CloseHandle(started.hProcess);
    }
    return 1;
}

int processIsRunning(HANDLE process) {
    DWORD code = 0;
    return GetExitCodeProcess(process, &code) != 0 && code == STILL_ACTIVE ? 1 : 0;
}

int waitForProcess(HANDLE process, std::uint32_t* exitCode) {
    DWORD code = STILL_ACTIVE;
    bool known = GetExitCodeProcess(process, &code) != 0;
    while (known && code == STILL_ACTIVE) {
        Sleep(pollMs);
        known = GetExitCodeProcess(process, &code) != 0;
    }
    if (known && exitCode != nullptr) {
        *exitCode = code;
    }
    CloseHandle(process);
    return 1;
}

int terminateProcess(HANDLE process) {
    return TerminateProcess(process, 0) != 0 ? 1 : 0;
}

}  // namespace vek::os
