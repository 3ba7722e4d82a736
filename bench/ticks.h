// The time-stamp counter, for spans below a microsecond: under Wine the performance counter has
// steps of 100 ns. The machine needs a counter of constant rate (constant_tsc and nonstop_tsc).
#pragma once

#include <cstdint>

#include "bench/measure.h"

namespace vek_bench {

// Reads the counter, after all earlier instructions have completed.
inline std::uint64_t ticks() {
    unsigned aux;
    const std::uint64_t now = __builtin_ia32_rdtscp(&aux);
    asm volatile("lfence" ::: "memory");
    return now;
}

// Measures the counter's rate for 200 ms.
inline double nanosecondsPerTick() {
    const std::uint64_t from = ticks();
    const double passed = nanoseconds([] { Sleep(200); });
    return passed / static_cast<double>(ticks() - from);
}

}  // namespace vek_bench
