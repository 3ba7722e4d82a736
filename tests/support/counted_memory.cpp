#include "tests/support/counted_memory.h"

#include <climits>
#include <cstdlib>
#include <new>

namespace {

thread_local int allocationCount = 0;
thread_local std::size_t byteCount = 0;
thread_local int allowed = INT_MAX;
thread_local std::size_t refusedSize = SIZE_MAX;
thread_local std::size_t largestSize = SIZE_MAX;

}  // namespace

namespace support {

int allocations() {
    return allocationCount;
}

std::size_t allocatedBytes() {
    return byteCount;
}

MemoryLimit::MemoryLimit(int count, std::size_t notOfSize, std::size_t largest) {
    allowed = count;
    refusedSize = notOfSize;
    largestSize = largest;
}

MemoryLimit::~MemoryLimit() {
    allowed = INT_MAX;
    refusedSize = SIZE_MAX;
    largestSize = SIZE_MAX;
}

}  // namespace support

// The other forms, those of arrays too, of the operator come down to these.
void* operator new(std::size_t size) {
    const bool refused = size == refusedSize || size > largestSize || allowed == 0;
    void* const memory = refused ? nullptr : std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    --allowed;
    ++allocationCount;
    byteCount += size;
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
