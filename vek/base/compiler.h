// The one place for what the compilers of this target spell differently.
#pragma once

#ifdef _MSC_VER
#include <intrin.h>
#include <stdlib.h>
#endif

// The signature of the function that this stands in, as the compiler spells it: a const char*.
#ifdef _MSC_VER
#define VEK_FUNCTION_SIGNATURE __FUNCSIG__
#else
#define VEK_FUNCTION_SIGNATURE __PRETTY_FUNCTION__
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

// Keeps `abort` from reporting a fault to the system, which may show a message box. The runtime of
// the other compilers never reports one.
inline void disableFaultReport() {
#ifdef _MSC_VER
    _set_abort_behavior(0, _CALL_REPORTFAULT);
#endif
}

// While one lives, the C runtime reports an argument that it refuses to the caller of this thread,
// where it would otherwise end the process. For programs of the other compilers their start-up code
// sees to that.
class QuietRuntimeErrors {
  public:
    QuietRuntimeErrors(const QuietRuntimeErrors&) = delete;
    QuietRuntimeErrors& operator=(const QuietRuntimeErrors&) = delete;
#ifdef _MSC_VER
    QuietRuntimeErrors() : previous(_set_thread_local_invalid_parameter_handler(&ignore)) {}
    ~QuietRuntimeErrors() {
        _set_thread_local_invalid_parameter_handler(previous);
    }

  private:
    static void ignore(const wchar_t*, const wchar_t*, const wchar_t*, unsigned, uintptr_t) {}

    _invalid_parameter_handler previous;
#else
    QuietRuntimeErrors() {}
    ~QuietRuntimeErrors() {}
#endif
};

}  // namespace vek
