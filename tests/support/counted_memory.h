// Counts, and refuses, what the calling thread allocates by operator new. For programs that link
// the library counted_memory, which replaces that operator.
#pragma once

#include <cstddef>
#include <cstdint>

namespace support {

int allocations();
std::size_t allocatedBytes();

// The number of allocations of `work` on this thread.
template <class Work>
int allocationsOf(const Work& work) {
    const int before = allocations();
    work();
    return allocations() - before;
}

// Limits the allocations of this thread for a scope: to `count` of them, to none of the size
// `notOfSize`, and to none beyond `largest`.
class MemoryLimit {
  public:
    explicit MemoryLimit(int count, std::size_t notOfSize = SIZE_MAX,
                         std::size_t largest = SIZE_MAX);
    ~MemoryLimit();
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;
};

}  // namespace support
