// Small queries of the system. They throw nothing and are thread-safe.
#pragma once

namespace vek {

// Returns true if the system has the version `major`.`minor` with `servicePack`, or a later one.
// The system reports an older version to a program whose manifest doesn't name the present one.
// Calls VerifyVersionInfoW.
bool isWindowsAtLeast(int major, int minor, int servicePack);
bool isWindows10OrLater();
bool isWindows6OrLater();

// Returns the processor architecture of the machine, whatever this program was built for, as an ELF
// machine number: 3 for x86, 40 for ARM, 50 for IA-64, 62 for x86-64, 0 for any other. Calls
// GetNativeSystemInfo.
int machineType();

}  // namespace vek
