// Counts, and refuses, what the calling thread allocates by operator new. For programs that link
// counted_memory.cpp, which replaces that operator; only whole numbers are kept, per thread.
#pragma once

#include <cstddef>

namespace vek_test {

int allocations();
std::size_t allocatedBytes();

// Limits the allocations of this thread for a scope: to `count` of them, and to none of the size
// `notOfSize`.
class MemoryLimit {
  public:
    explicit MemoryLimit(int count, std::size_t notOfSize = 0);
    ~MemoryLimit();
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;
};

}  // namespace vek_test
