#include "vek/os/thread_name.h"

#include "vek/base/windows.h"

namespace vek::os {

namespace {

// The number of the exception by which debuggers take a thread's name, and the record that goes
// with it.
constexpr DWORD nameThreadException = 0x406D1388;

struct ThreadName {
    DWORD type = 0x1000;
    const char* name;
    DWORD threadId;
    DWORD flags = 0;
};

LONG CALLBACK ignoreNaming(EXCEPTION_POINTERS* raised) {
    return raised->ExceptionRecord->ExceptionCode == nameThreadException
               ? EXCEPTION_CONTINUE_EXECUTION
               : EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

int nameThread(const char* name) {
    if (name == nullptr) {
        return 0;
    }
    // A debugger sees the exception before any handler does. Without one, the exception would end
    // the process, so it is raised only with a handler in place that continues after it. A vectored
    // handler is what compilers without a __try of their own can use.
    void* handler = AddVectoredExceptionHandler(1, ignoreNaming);
    if (handler == nullptr) {
        return 0;
    }
    const ThreadName record = {.name = name, .threadId = GetCurrentThreadId()};
    RaiseException(nameThreadException, 0, sizeof record / sizeof(ULONG_PTR),
                   reinterpret_cast<const ULONG_PTR*>(&record));
    RemoveVectoredExceptionHandler(handler);
    return 1;
}

}  // namespace vek::os
