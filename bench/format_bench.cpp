// How long vek::format takes against snprintf, for texts of several lengths, in plain and in
// numbered form. Prints, per text, the times and their ratios to snprintf, each the median of many
// rounds. Beside them stands what a std::string of that length costs alone, which is part of the
// time of vek::format: beyond 15 characters it allocates.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "vek/base/format.h"

namespace {

constexpr int rounds = 101;
constexpr int callsPerRound = 2000;

// Keeps the compiler from leaving out work whose result nobody reads.
volatile std::size_t seenLength = 0;

template <class F>
double nanosecondsPerCall(F call) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < callsPerRound; ++i) {
        seenLength = call(i);
    }
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - start;
    return taken.count() / callsPerRound;
}

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The ways are measured in turns, so that what else the machine does meets all alike.
template <class Snprintf, class Plain, class Numbered>
void compare(const char* name, Snprintf bare, Plain plain, Numbered numbered) {
    const std::size_t length = bare(0);
    const std::vector<char> text(length, 'x');
    const auto string = [&](int) { return std::string(text.data(), length).size(); };
    std::vector<double> times[4];
    for (int i = 0; i < rounds; ++i) {
        times[0].push_back(nanosecondsPerCall(bare));
        times[1].push_back(nanosecondsPerCall(string));
        times[2].push_back(nanosecondsPerCall(plain));
        times[3].push_back(nanosecondsPerCall(numbered));
    }
    const double bareTime = median(times[0]);
    std::printf("%-8s %4u characters  snprintf %5.0f ns", name, static_cast<unsigned>(length),
                bareTime);
    const char* names[] = {"string", "format", "numbered"};
    for (int way = 1; way < 4; ++way) {
        const double time = median(times[way]);
        std::printf("  %s %5.0f ns %5.2f", names[way - 1], time, time / bareTime);
    }
    std::printf("\n");
}

template <class... Arguments>
std::size_t bareLength(const char* pattern, Arguments... arguments) {
    char buffer[4096];
    return static_cast<std::size_t>(std::snprintf(buffer, sizeof buffer, pattern, arguments...));
}

}  // namespace

int main() {
    const char* file = "C:\\some\\folder\\name.txt";
    const std::string kilobyte(1000, 'x');
    compare(
        "tiny", [](int i) { return bareLength("%d of %d", i % 10 + 1000, 12345); },
        [](int i) { return vek::format("%d of %d", i % 10 + 1000, 12345).size(); },
        [](int i) { return vek::format("%1$d of %2$d", i % 10 + 1000, 12345).size(); });
    compare(
        "short", [=](int i) { return bareLength("copied: %d of %d files, %s", i % 10, 345, file); },
        [=](int i) { return vek::format("copied: %d of %d files, %s", i % 10, 345, file).size(); },
        [=](int i) {
            return vek::format("copied: %1$d of %2$d files, %3$s", i % 10, 345, file).size();
        });
    compare(
        "line",
        [=](int i) {
            return bareLength("%s: line %d: '%s' can't be opened, error %u (attempt %d of %d)",
                              file, i % 10, file, 32u, 3, 5);
        },
        [=](int i) {
            return vek::format("%s: line %d: '%s' can't be opened, error %u (attempt %d of %d)",
                               file, i % 10, file, 32u, 3, 5)
                .size();
        },
        [=](int i) {
            return vek::format(
                       "%1$s: line %2$d: '%3$s' can't be opened, error %4$u (attempt %5$d of %6$d)",
                       file, i % 10, file, 32u, 3, 5)
                .size();
        });
    compare(
        "2 passes", [&](int i) { return bareLength("%s: %d.", kilobyte.c_str(), i % 10 + 100); },
        [&](int i) { return vek::format("%s: %d.", kilobyte.c_str(), i % 10 + 100).size(); },
        [&](int i) { return vek::format("%1$s: %2$d.", kilobyte.c_str(), i % 10 + 100).size(); });
    return 0;
}
