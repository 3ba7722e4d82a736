// format_bench: vek::format, compared with snprintf, for texts of several lengths, in plain and in
// numbered form. The third figure of each text is the cost of a std::string of that length alone,
// which is part of the time of vek::format: beyond 15 characters it allocates.
#include <cstdio>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "vek/base/format.h"

namespace {

constexpr int rounds = 101;
constexpr int callsPerRound = 2000;

// Keeps the compiler from removing work whose result is never read.
volatile std::size_t seenLength = 0;

template <class F>
double nanosecondsPerCall(F call) {
    return vek_bench::nanoseconds([&] {
               for (int i = 0; i < callsPerRound; ++i) {
                   seenLength = call(i);
               }
           }) /
           callsPerRound;
}

template <class Snprintf, class Plain, class Numbered>
void compare(const char* name, Snprintf bare, Plain plain, Numbered numbered) {
    const std::size_t length = bare(0);
    vek_bench::require(plain(0) == length && numbered(0) == length,
                       std::string(name) + ": the texts differ in length");
    const std::vector<char> text(length, 'x');
    const auto string = [&](int) { return std::string(text.data(), length).size(); };
    std::vector<double> times[4];
    for (int round = vek_bench::repetitions(rounds); round > 0; --round) {
        times[0].push_back(nanosecondsPerCall(bare));
        times[1].push_back(nanosecondsPerCall(string));
        times[2].push_back(nanosecondsPerCall(plain));
        times[3].push_back(nanosecondsPerCall(numbered));
    }
    const char* const ways[] = {"snprintf", "a string alone", "plain", "numbered"};
    for (int way = 1; way < 4; ++way) {
        vek_bench::report({.name = std::string(name) + ", " + std::to_string(length) +
                                   " characters, " + ways[way],
                           .own = vek_bench::median(times[way]),
                           .other = vek_bench::median(times[0]),
                           .otherName = ways[0]});
    }
}

template <class... Arguments>
std::size_t bareLength(const char* pattern, Arguments... arguments) {
    char buffer[4096];
    return static_cast<std::size_t>(std::snprintf(buffer, sizeof buffer, pattern, arguments...));
}

void measureAll() {
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
}

}  // namespace

int main(int argc, char** argv) {
    return vek_bench::runBenchmark(argc, argv,
                                   "format_bench [--smoke] [--json]\n"
                                   "\n"
                                   "vek::format of short texts, compared with snprintf.\n",
                                   measureAll);
}
