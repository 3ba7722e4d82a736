// Flat functions that start processes and wait for them.
//
// They throw nothing. Unless said otherwise the result is 1 for success and 0 for failure, with
// GetLastError left as the system left it. All are safe from any thread. A process counts as
// running while its exit code is 259 (STILL_ACTIVE), so one that has ended with 259 counts as
// running for good, and a wait for it never ends.
#pragma once

#include <cstdint>

#include "vek/base/windows.h"

namespace vek::os {

// Added to the show mode of runProcess, this leaves out the wait.
inline constexpr std::uint32_t runWithoutWait = 0x10000;

// Starts `commandLine` (the program, in quotes if its path has blanks, and its arguments) and waits
// until it has ended. The program's first window is shown in the way that the low 16 bits of
// `showMode` (SW_...) ask for. It inherits no handles, and has this process's environment and
// current directory and normal priority.
//
// The exit code goes to `exitCode`, which may be null. With runWithoutWait among the bits of
// `showMode` there is no wait, and no exit code is stored. The result is 0 if there was no starting
// it or no asking for its exit code.
//
// Stands on CreateProcessA and, each 50 ms, at least once, GetExitCodeProcess.
int runProcess(const char* commandLine, std::uint32_t showMode, std::uint32_t* exitCode);

// The same, minimised (SW_SHOWMINIMIZED), with the wait and without the exit code.
int runProcessHidden(const char* commandLine);

// Starts `commandLine` in the same way, without a wait; bit 0x10000 means nothing here. The handle
// of the process goes to `process` and is then the caller's, to be ended by closeObject or
// waitForProcess; it is null if there was no starting. `process` itself may be null. Stands on
// CreateProcessA.
int runProcessNoWait(const char* commandLine, std::uint32_t showMode, HANDLE* process);

// 1 if the exit code of `process` is 259; 0 otherwise, also if it can't be had. Stands on
// GetExitCodeProcess.
int processIsRunning(HANDLE process);

// Waits until `process` has ended, stores its exit code, unless `exitCode` is null, and closes the
// handle. The result is always 1: if the exit code can't be had, none is stored. Stands on
// GetExitCodeProcess, each 50 ms, and CloseHandle.
int waitForProcess(HANDLE process, std::uint32_t* exitCode);

// Ends `process` with exit code 0, without waiting for its end. Stands on TerminateProcess.
int terminateProcess(HANDLE process);

}  // namespace vek::os
