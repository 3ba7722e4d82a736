// Flat functions for the system's named objects and for waits.
//
// They throw nothing. Unless said otherwise they return 1 for success and 0 for failure, with
// GetLastError left as the system left it. A null output argument for a handle gives 0 without a
// system call. All are thread-safe. The caller owns each handle and closes it with closeObject.
//
// Names are passed through globalObjectName; a null or empty name makes an object without a name.
// Bit 0 of `flags` (useSharedSecurity) gives a new object the shared security. A create... function
// also opens an object that exists: GetLastError is ERROR_ALREADY_EXISTS (183) then. No handle is
// inherited. After a failure the output handle is null.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vek/base/windows.h"
#include "vek/os/security.h"

namespace vek::os {

// Returns the name under which a named object is created and opened, so that processes of all
// sessions share it: "Global\" and `name` on every system that has that namespace, as
// GetVersionExA reports. A null or empty name, or one of `maxGlobalName` bytes or more, is returned
// unchanged; otherwise the result is `buffer`, of `size` bytes. `globalNameBuffer` bytes are enough
// for every such name.
inline constexpr std::size_t maxGlobalName = 120;
inline constexpr std::size_t globalNameBuffer = 128;
const char* globalObjectName(const char* name, char* buffer, std::size_t size);

// Creates a semaphore with a maximum of 1; `initialCount` is 0 or 1. Calls CreateSemaphoreA.
int createSemaphore(HANDLE* semaphore, const char* name, long initialCount, std::uint32_t flags);

// Opens the existing semaphore `name` with all access. Calls OpenSemaphoreA.
int openSemaphore(HANDLE* semaphore, const char* name);

// Raises the count of `semaphore` by 1; fails with ERROR_TOO_MANY_POSTS (298) if it is 1 already.
// Calls ReleaseSemaphore.
int releaseSemaphore(HANDLE semaphore);

// Creates an auto-reset event, initially not signalled. Calls CreateEventA.
int createEvent(HANDLE* event, const char* name, std::uint32_t flags);

// Opens the existing event `name` with all access. Calls OpenEventA.
int openEvent(HANDLE* event, const char* name);

// Signals `event`. Calls SetEvent.
int setEvent(HANDLE event);

// Resets `event` to not signalled. Calls ResetEvent.
int resetEvent(HANDLE event);

// Creates a mutex, initially not owned. Calls CreateMutexA.
int createMutex(HANDLE* mutex, const char* name, std::uint32_t flags);

// Opens the existing mutex `name` with all access. Calls OpenMutexA.
int openMutex(HANDLE* mutex, const char* name);

// Releases `mutex`; only the thread that owns it can. Calls ReleaseMutex.
int releaseMutex(HANDLE mutex);

// Blocks until `object` is signalled, at most `timeoutMs` milliseconds (INFINITE: without limit).
// Returns 1 unless the wait itself failed. So only `result`, which may be null, distinguishes a
// time-out (WAIT_TIMEOUT, 258) from a signal (WAIT_OBJECT_0, 0) and from a mutex whose owner has
// ended (WAIT_ABANDONED, 128). After a failed wait `result` holds the error number. Calls
// WaitForSingleObject.
int waitObject(HANDLE object, std::uint32_t timeoutMs, std::uint32_t* result);

// The same for `count` objects: blocks until one of them is signalled or, if `waitAll` isn't 0, all
// of them. On success `result` is the index of the object that ended the wait (for an abandoned
// mutex plus 128), or WAIT_TIMEOUT. The system takes 1 to 64 objects; other counts, and a null
// array, fail with ERROR_INVALID_PARAMETER (87). Calls WaitForMultipleObjects.
int waitObjects(const HANDLE* objects, std::uint32_t count, int waitAll, std::uint32_t timeoutMs,
                std::uint32_t* result);

// Closes `object`. Calls CloseHandle.
int closeObject(HANDLE object);

}  // namespace vek::os
