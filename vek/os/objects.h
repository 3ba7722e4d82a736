// Flat functions over the system's named objects and waits.
//
// They throw nothing. Unless said otherwise the result is 1 for success and 0 for failure, with
// GetLastError left as the system left it. A null output argument for a handle gives 0 without a
// system call. All are safe from any thread; a handle is owned by the caller, who ends it with
// closeObject.
//
// Names go through globalObjectName; a null or empty name makes an object without one. Where
// `flags` are taken, bit 0 (useSharedSecurity) gives a new object the shared security. An object
// that exists is opened by a create... function, too: GetLastError is ERROR_ALREADY_EXISTS (183)
// then. No handle is inherited. After a failure the output handle is null.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vek/base/windows.h"
#include "vek/os/security.h"

namespace vek::os {

// The name under which a named object is created and opened, so that processes of all sessions
// meet: "Global\" and `name` on every system that has that namespace (GetVersionExA tells). A null
// or empty name, or one of `maxGlobalName` bytes or more, is given back as it stands; otherwise the
// result is `buffer`, of `size` bytes. `globalNameBuffer` bytes hold every such name.
inline constexpr std::size_t maxGlobalName = 120;
inline constexpr std::size_t globalNameBuffer = 128;
const char* globalObjectName(const char* name, char* buffer, std::size_t size);

// Creates a semaphore that counts from 0 to 1; `initialCount` is one of the two. Stands on
// CreateSemaphoreA.
int createSemaphore(HANDLE* semaphore, const char* name, long initialCount, std::uint32_t flags);

// Opens the existing semaphore `name` with all access. Stands on OpenSemaphoreA.
int openSemaphore(HANDLE* semaphore, const char* name);

// Raises the count of `semaphore` by 1; one that stands at 1 already fails with
// ERROR_TOO_MANY_POSTS (298). Stands on ReleaseSemaphore.
int releaseSemaphore(HANDLE semaphore);

// Creates an event, not signalled at first, that a wait which it ends resets. Stands on
// CreateEventA.
int createEvent(HANDLE* event, const char* name, std::uint32_t flags);

// Opens the existing event `name` with all access. Stands on OpenEventA.
int openEvent(HANDLE* event, const char* name);

// Signals `event`. Stands on SetEvent.
int setEvent(HANDLE event);

// Takes the signal from `event`. Stands on ResetEvent.
int resetEvent(HANDLE event);

// Creates a mutex that nobody owns at first. Stands on CreateMutexA.
int createMutex(HANDLE* mutex, const char* name, std::uint32_t flags);

// Opens the existing mutex `name` with all access. Stands on OpenMutexA.
int openMutex(HANDLE* mutex, const char* name);

// Gives up `mutex`, which only the thread that owns it can. Stands on ReleaseMutex.
int releaseMutex(HANDLE mutex);

// Waits up to `timeoutMs` milliseconds (INFINITE waits without end) until `object` is signalled.
// The result is 1 unless the wait itself failed, so only `result`, which may be null, tells a
// time-out (WAIT_TIMEOUT, 258) from a signal (WAIT_OBJECT_0, 0) and from a mutex whose owner ended
// (WAIT_ABANDONED, 128); after a failed wait it holds the error number. Stands on
// WaitForSingleObject.
int waitObject(HANDLE object, std::uint32_t timeoutMs, std::uint32_t* result);

// The same for `count` objects, of which one ends the wait or, if `waitAll` isn't 0, only all
// together do. On success `result` is the index of the object that did (that of an abandoned mutex
// plus 128), or WAIT_TIMEOUT. The system takes 1 to 64 objects; other counts, and a null array,
// fail with ERROR_INVALID_PARAMETER (87). Stands on WaitForMultipleObjects.
int waitObjects(const HANDLE* objects, std::uint32_t count, int waitAll, std::uint32_t timeoutMs,
                std::uint32_t* result);

// Closes `object`. Stands on CloseHandle.
int closeObject(HANDLE object);

}  // namespace vek::os
