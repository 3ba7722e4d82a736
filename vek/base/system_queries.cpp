#include "vek/base/system_queries.h"

#include <initializer_list>

#include "vek/base/windows.h"

namespace vek {

namespace {

struct Machine {
    WORD architecture;
    int elfNumber;
};

constexpr Machine machines[] = {
    {PROCESSOR_ARCHITECTURE_INTEL, 3},
    {PROCESSOR_ARCHITECTURE_ARM, 40},
    {PROCESSOR_ARCHITECTURE_IA64, 50},
    {PROCESSOR_ARCHITECTURE_AMD64, 62},
};

}  // namespace

bool isWindowsAtLeast(int major, int minor, int servicePack) {
    OSVERSIONINFOEXW wanted = {};
    wanted.dwOSVersionInfoSize = sizeof wanted;
    wanted.dwMajorVersion = static_cast<DWORD>(major);
    wanted.dwMinorVersion = static_cast<DWORD>(minor);
    wanted.wServicePackMajor = static_cast<WORD>(servicePack);
    constexpr DWORD types = VER_MAJORVERSION | VER_MINORVERSION | VER_SERVICEPACKMAJOR;
    DWORDLONG conditions = 0;
    for (const DWORD type :
         std::initializer_list<DWORD>{VER_MAJORVERSION, VER_MINORVERSION, VER_SERVICEPACKMAJOR}) {
        conditions = VerSetConditionMask(conditions, type, VER_GREATER_EQUAL);
    }
    return VerifyVersionInfoW(&wanted, types, conditions) != 0;
}

bool isWindows10OrLater() {
    return isWindowsAtLeast(10, 0, 0);
}

bool isWindows6OrLater() {
    return isWindowsAtLeast(6, 0, 0);
}

int machineType() {
    SYSTEM_INFO info = {};
    GetNativeSystemInfo(&info);
    for (const Machine& machine : machines) {
        if (machine.architecture == info.wProcessorArchitecture) {
            return machine.elfNumber;
        }
    }
    return 0;
}

}  // namespace vek
