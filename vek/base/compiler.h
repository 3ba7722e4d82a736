// What the compilers of this target spell differently. No other file depends on the compiler.
#pragma once

#ifdef _MSC_VER
#include <intrin.h>
#include <stdlib.h>
#endif

// The signature of the enclosing function as the compiler spells it: a const char*.
#ifdef _MSC_VER
#define VEK_FUNCTION_SIGNATURE __FUNCSIG__
#else
#define VEK_FUNCTION_SIGNATURE __PRETTY_FUNCTION__
#endif

// VEK_PRINTF(format, first): the parameter number `format` is a printf format, and the arguments
// for it begin at parameter number `first`; 0 for a std::va_list. A member function counts its
// object as parameter 1. The compiler checks the calls. On this target the C++ library's printf
// functions take the GNU forms ("%lld", "%zu").
#if defined(__clang__)
#define VEK_PRINTF(format, first) __attribute__((__format__(__printf__, format, first)))
#elif defined(__GNUC__)
#define VEK_PRINTF(format, first) __attribute__((__format__(__gnu_printf__, format, first)))
#else
#define VEK_PRINTF(format, first)
#endif

namespace vek {

// Ends the process at once, without any handler, with the exit code 0xC0000409. `reason` is one of
// the system's FAST_FAIL_... numbers.
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

// While an object of this class exists, a C runtime function that refuses an argument returns an
// error to its caller on this thread; with this compiler's runtime it would otherwise end the
// process. The start-up code of the other compilers does the same for the whole process.
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
