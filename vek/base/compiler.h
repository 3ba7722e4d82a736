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

// Which lock guards what, for the compilers that check it (clang's -Wthread-safety). A capability
// is a class whose objects are locks; `lock` below is an object of such a class, as the declaration
// sees it.
//
//   VEK_CAPABILITY          a class of locks
//   VEK_SCOPED_CAPABILITY   a class that holds a lock from its constructor to its destructor
//   VEK_GUARDED_BY(lock)    a variable that is read and written with `lock` held only
//   VEK_REQUIRES(lock)      a function whose caller holds `lock`
//   VEK_ACQUIRE(lock)       a function that returns with `lock` held; without argument, with this
//   object VEK_ACQUIRE_SHARED(lock), VEK_TRY_ACQUIRE(result, lock)
//                           the same together with other readers, and if it returns `result`
//   VEK_RELEASE(lock)       a function that unlocks it; VEK_RELEASE_ANY also what is held shared
//   VEK_RETURN_CAPABILITY(lock)
//                           a function that returns a reference to `lock`
//   VEK_NO_LOCK_ANALYSIS    a function whose body isn't checked; a comment says why
#ifdef __clang__
#define VEK_LOCK_ATTRIBUTE(...) __attribute__((__VA_ARGS__))
#else
#define VEK_LOCK_ATTRIBUTE(...)
#endif
#define VEK_CAPABILITY VEK_LOCK_ATTRIBUTE(capability("mutex"))
#define VEK_SCOPED_CAPABILITY VEK_LOCK_ATTRIBUTE(scoped_lockable)
#define VEK_GUARDED_BY(lock) VEK_LOCK_ATTRIBUTE(guarded_by(lock))
#define VEK_REQUIRES(...) VEK_LOCK_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define VEK_ACQUIRE(...) VEK_LOCK_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define VEK_ACQUIRE_SHARED(...) VEK_LOCK_ATTRIBUTE(acquire_shared_capability(__VA_ARGS__))
#define VEK_TRY_ACQUIRE(...) VEK_LOCK_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define VEK_RELEASE(...) VEK_LOCK_ATTRIBUTE(release_capability(__VA_ARGS__))
#define VEK_RELEASE_ANY(...) VEK_LOCK_ATTRIBUTE(release_generic_capability(__VA_ARGS__))
#define VEK_RETURN_CAPABILITY(lock) VEK_LOCK_ATTRIBUTE(lock_returned(lock))
#define VEK_NO_LOCK_ANALYSIS VEK_LOCK_ATTRIBUTE(no_thread_safety_analysis)

namespace vek {

// Whether std::set_terminate sets the handler of the calling thread only.
#ifdef _MSC_VER
inline constexpr bool terminateHandlerIsPerThread = true;
#else
inline constexpr bool terminateHandlerIsPerThread = false;
#endif

// The processor's part of vek::failFast, for systems that have it.
[[noreturn]] inline void raiseFastFail(unsigned reason) {
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
