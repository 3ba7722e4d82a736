// The handles that this process has open.
#pragma once

#include <cstdint>
#include <set>

#include "vek/base/windows.h"

namespace support {

// Found by trying each value that a handle may have: Wine's GetProcessHandleCount doesn't count.
inline std::set<std::uintptr_t> openHandles() {
    std::set<std::uintptr_t> open;
    DWORD flags = 0;
    for (std::uintptr_t value = 4; value < 0x4000; value += 4) {
        if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0) {
            open.insert(value);
        }
    }
    return open;
}

}  // namespace support
