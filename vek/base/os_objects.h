// Flat functions over the system's named objects and waits.
//
// They throw nothing. Unless said otherwise the result is 1 for success and 0 for failure, with
// GetLastError left as the system left it. A null output argument for a handle gives 0 without a
// system call. All are safe from any thread; a handle is owned by the caller, who ends it with
// closeObject.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vek/base/windows.h"

namespace vek::os {

// The name under which a named object is created and opened, so that processes of all sessions
// meet: "Global\" and `name` on every system that has that namespace (GetVersionExA tells). A null
// or empty name, or one of `maxGlobalName` bytes or more, is given back as it stands; otherwise the
// result is `buffer`, of `size` bytes.
inline constexpr std::size_t maxGlobalName = 120;
const char* globalObjectName(const char* name, char* buffer, std::size_t size);

// Opens the existing event `name` with all access, not inherited, under the name that
// globalObjectName gives. Stands on OpenEventA.
int openEvent(HANDLE* event, const char* name);

// Signals `event`. Stands on SetEvent.
int setEvent(HANDLE event);

// Waits up to `timeoutMs` milliseconds (INFINITE waits without end) until `object` is signalled.
// The result is 1 unless the wait itself failed, so only `result`, which may be null, tells a
// time-out (WAIT_TIMEOUT, 258) from a signal; after a failed wait it holds the error number. Stands
// on WaitForSingleObject.
int waitObject(HANDLE object, std::uint32_t timeoutMs, std::uint32_t* result);

// Closes `object`. Stands on CloseHandle.
int closeObject(HANDLE object);

}  // namespace vek::os
