// What is allocated on all heaps of this process.
#pragma once

#include <array>
#include <cstddef>

#include "vek/base/windows.h"

namespace support {

struct HeapUse {
    std::size_t bytes = 0;
    std::size_t blocks = 0;
};

inline HeapUse heapUse() {
    std::array<HANDLE, 64> heaps;
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    HeapUse use;
    for (DWORD i = 0; i < count && i < heaps.size(); ++i) {
        PROCESS_HEAP_ENTRY entry = {};
        HeapLock(heaps[i]);
        while (HeapWalk(heaps[i], &entry) != 0) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
                use.bytes += entry.cbData;
                ++use.blocks;
            }
        }
        HeapUnlock(heaps[i]);
    }
    return use;
}

}  // namespace support
