// Telling a debugger the name of a thread.
#pragma once

namespace vek::os {

// Reports `name` as the name of the calling thread to an attached debugger. Without a debugger
// nothing happens. Returns 1; returns 0 and reports nothing for a null name or if no exception
// handler can be added. Throws nothing. Thread-safe. Calls RaiseException.
int nameThread(const char* name);

}  // namespace vek::os
