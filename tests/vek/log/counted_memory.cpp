#include "tests/vek/log/counted_memory.h"

#include <climits>
#include <cstdlib>
#include <new>

namespace {

thread_local int allocationCount = 0;
thread_local std::size_t byteCount = 0;
thread_local int allowed = INT_MAX;
thread_local std::size_t refusedSize = 0;

}  // namespace

namespace vek_test {

int allocations() {
    return allocationCount;
}

std::size_t allocatedBytes() {
    return byteCount;
}

MemoryLimit::MemoryLimit(int count, std::size_t notOfSize) {
    allowed = count;
    refusedSize = notOfSize;
}

MemoryLimit::~MemoryLimit() {
    allowed = INT_MAX;
    refusedSize = 0;
}

}  // namespace vek_test

// The other forms of the operator come down to these.
void* operator new(std::size_t size) {
    void* const memory = size == refusedSize || allowed == 0 ? nullptr : std::malloc(size);
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
