// The end of a process whose state can't be trusted.
#pragma once

namespace vek {

// Ends the process at once, without any handler, with the exit code 0xC0000409. `reason` is one of
// the system's FAST_FAIL_... numbers. Before Windows 8, which has no fast fail, calls
// TerminateProcess: the reason is lost then.
[[noreturn]] void failFast(unsigned reason);

}  // namespace vek
