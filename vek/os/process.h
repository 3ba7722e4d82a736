// Flat functions that start processes and wait for them.
//
// They throw nothing. Unless said otherwise they return 1 for success and 0 for failure, with
// GetLastError left as the system left it. All are thread-safe. A process counts as running while
// its exit code is 259 (STILL_ACTIVE): a process that has ended with 259 counts as running forever,
// and a wait for it never returns.
#pragma once

#include <cstdint>

#include "vek/base/windows.h"

namespace vek::os {

// A bit of runProcess's show mode: return without waiting.
inline constexpr std::uint32_t runWithoutWait = 0x10000;

// Starts `commandLine` (the program, in quotes if its path has blanks, and its arguments) and
// blocks until it has ended. The low 16 bits of `showMode` (SW_...) say how its first window is
// shown. The process inherits no handles; it gets this process's environment and current directory,
// and normal priority.
//
// The exit code is stored in `exitCode`, which may be null. With the bit runWithoutWait in
// `showMode` the function returns at once and stores no exit code. Returns 0 if the process can't
// be started or its exit code can't be read.
//
// Calls CreateProcessA and, each 50 ms, at least once, GetExitCodeProcess.
int runProcess(const char* commandLine, std::uint32_t showMode, std::uint32_t* exitCode);

// The same with SW_SHOWMINIMIZED and without the exit code. Blocks until the process has ended.
int runProcessHidden(const char* commandLine);

// Starts `commandLine` in the same way and returns at once; bit 0x10000 is ignored. Stores the
// handle of the process in `process`, null on failure. The caller owns it and closes it with
// closeObject or waitForProcess. `process` itself may be null. Calls CreateProcessA.
int runProcessNoWait(const char* commandLine, std::uint32_t showMode, HANDLE* process);

// Returns 1 if the exit code of `process` is 259; 0 otherwise, also if it can't be read. Calls
// GetExitCodeProcess.
int processIsRunning(HANDLE process);

// Blocks until `process` has ended, stores its exit code unless `exitCode` is null, and closes the
// handle. Always returns 1: if the exit code can't be read, none is stored. Calls
// GetExitCodeProcess, each 50 ms, and CloseHandle.
int waitForProcess(HANDLE process, std::uint32_t* exitCode);

// Ends `process` with exit code 0. Doesn't wait for its end. Calls TerminateProcess.
int terminateProcess(HANDLE process);

}  // namespace vek::os
