// What the speed measurements share: medians of many rounds by the performance counter, and a table
// of ratios. Each measurement is taken in turns with the one that it is compared with, so that what
// else the machine does hits both.
#pragma once

#include <algorithm>
#include <cstdio>
#include <vector>

#include "vek/base/windows.h"

namespace vek_bench {

// Nanoseconds that one call of `work` takes.
template <class Work>
double nanoseconds(Work work) {
    LARGE_INTEGER frequency;
    LARGE_INTEGER start;
    LARGE_INTEGER end;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&start);
    work();
    QueryPerformanceCounter(&end);
    return static_cast<double>(end.QuadPart - start.QuadPart) * 1e9 /
           static_cast<double>(frequency.QuadPart);
}

inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Prints the medians of `rounds` calls of `work` and `bare`, each of which does its operation
// `perCall` times, and their ratio. With a `target` above 0 that is told, too.
template <class Work, class Bare>
void compare(const char* what, int rounds, int perCall, Work work, Bare bare, double target = 0) {
    std::vector<double> workTimes;
    std::vector<double> bareTimes;
    work();
    bare();
    for (int round = 0; round < rounds; ++round) {
        workTimes.push_back(nanoseconds(work) / perCall);
        bareTimes.push_back(nanoseconds(bare) / perCall);
    }
    const double own = median(workTimes);
    const double reference = median(bareTimes);
    std::printf("%-44s %9.1f ns %9.1f ns bare   ratio %5.2f", what, own, reference,
                own / reference);
    if (target > 0) {
        std::printf("   (at most %.1f)", target);
    }
    std::printf("\n");
}

}  // namespace vek_bench
