// What the system's functions have allocated for their callers and got back.
#pragma once

#include <cstddef>

#include "vek/base/windows.h"

namespace support {

// The blocks in use of the process's heap, which LocalAlloc and the system's own libraries take
// their memory from.
inline std::size_t heapBlocks() {
    std::size_t blocks = 0;
    PROCESS_HEAP_ENTRY entry = {};
    HeapLock(GetProcessHeap());
    while (HeapWalk(GetProcessHeap(), &entry) != 0) {
        blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
    }
    HeapUnlock(GetProcessHeap());
    return blocks;
}

// True if `work`, done 500 times, leaves fewer than 100 blocks behind: those are what libraries
// keep from their first use.
template <class Work>
bool keepsNoMemory(const Work& work) {
    const std::size_t before = heapBlocks();
    for (int i = 0; i < 500; ++i) {
        work();
    }
    return heapBlocks() < before + 100;
}

}  // namespace support
