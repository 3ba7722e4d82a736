// os_failing_library.dll: a library whose start fails with a number that the system has no text
// for.
#include "vek/base/windows.h"

// Bit 29 marks numbers that are no one's but the program's, which the system hands on unchanged.
constexpr DWORD errorWithoutText = 0x20000001;

extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, void* /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        RaiseException(errorWithoutText, 0, 0, nullptr);
    }
    return TRUE;
}
