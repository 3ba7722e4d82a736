// The one place for what the compilers of this target spell differently.
#pragma once

#ifdef _MSC_VER
#include <intrin.h>
#endif

namespace vek {

// Ends the process at once, past all handlers, with the exit code 0xC0000409. `reason` is one of
// the FAST_FAIL_... numbers of the system.
[[noreturn]] inline void failFast(unsigned reason) {
#ifdef _MSC_VER
    __fastfail(reason);
#else
    __asm__ __volatile__("int $0x29" ::"c"(reason) : "memory");
    __builtin_unreachable();
#endif
}

}  // namespace vek
