// Telling a debugger the name of a thread.
#pragma once

namespace vek::os {

// Tells a debugger that is attached to this process that the calling thread is called `name`.
// Without a debugger nothing happens. The result is 1; it is 0 for a null name or if the system
// gives no handler, and nothing is told then. Throws nothing. Safe from any thread. Stands on
// RaiseException.
int nameThread(const char* name);

}  // namespace vek::os
