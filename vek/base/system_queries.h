// Small questions to the system about itself. They throw nothing and are safe from any thread.
#pragma once

namespace vek {

// True if the system is of the version `major`.`minor` with `servicePack`, or later. A program
// whose manifest doesn't name the system is told an older one. Stands on VerifyVersionInfoW.
bool isWindowsAtLeast(int major, int minor, int servicePack);
bool isWindows10OrLater();
bool isWindows6OrLater();

// The processor architecture of the machine, whatever this program was built for, as an ELF machine
// number: 3 for x86, 40 for ARM, 50 for IA-64, 62 for x86-64, 0 for any other. Stands on
// GetNativeSystemInfo.
int machineType();

}  // namespace vek
