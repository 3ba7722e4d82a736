// os_failing_library.dll: a library whose start fails with the system's error
// OS_FAILING_LIBRARY_ERROR of the environment; without that, with a number that the system has no
// text for.
#include <array>
#include <cstdlib>

#include "vek/base/windows.h"

// Bit 29 marks numbers that are no one's but the program's, which the system hands on unchanged.
constexpr DWORD errorWithoutText = 0x20000001;
// And these high bits mark the system's errors.
constexpr DWORD systemsError = 0xC0010000;

extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, void* /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        std::array<char, 16> number = {};
        const bool given =
            GetEnvironmentVariableA("OS_FAILING_LIBRARY_ERROR", number.data(), number.size()) != 0;
        RaiseException(
            given ? systemsError | std::strtoul(number.data(), nullptr, 10) : errorWithoutText, 0,
            0, nullptr);
    }
    return TRUE;
}
