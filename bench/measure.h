// Shared by the measuring programs: their command line, the timing, and the report of a figure.
//
// The two sides of a comparison are measured alternately, so that a disturbance of the machine hits
// both.
#pragma once

#include <string>
#include <vector>

#include "vek/base/windows.h"

namespace vek_bench {

struct Options {
    // Measure a little of everything, in less than 2 seconds: only whether the program works
    // counts.
    bool smoke = false;
    // Print each figure as one JSON object on a line of its own.
    bool json = false;
    // What else the command line holds.
    std::vector<std::string> arguments;
};

// The command line of this process. Written by runBenchmark, before anything is measured.
extern Options options;

// The body of main(): parses the command line, calls `measureAll`, returns the exit code. That is 0
// if everything was measured, 1 if `measureAll` threw or reported no figure (the message goes to
// stderr), and 2 for a wrong command line. --help prints `manual`. More than `maxArguments`
// arguments that are no options are wrong.
int runBenchmark(int argc, char** argv, const char* manual, void (*measureAll)(),
                 std::size_t maxArguments = 0);

// `full` repetitions, or `smoke` ones with --smoke.
int repetitions(int full, int smoke = 1);

// One measured figure, and what it is compared with.
struct Figure {
    std::string name;
    double own = 0;
    // The other side in the same unit; 0 if there is none.
    double other = 0;
    // The limit of own / other; 0 if there is none. A lower limit if `higherIsBetter`.
    double target = 0;
    const char* otherName = "bare";
    const char* unit = "ns";
    bool higherIsBetter = false;
};

// Prints `figure`, as text or as JSON. Throws std::runtime_error if a value isn't a positive,
// finite number: then nothing was measured.
void report(const Figure& figure);

// The same for values that may be 0, such as processor time.
void reportValue(const std::string& name, double value, const char* unit);

// Throws std::runtime_error(`message`) unless `condition` holds. For results that show whether what
// was measured has worked.
void require(bool condition, const std::string& message);

// The middle of `values`, which must not be empty. Of an even number the higher of the middle two.
double median(std::vector<double> values);

// How long `work` takes, in nanoseconds. Calls QueryPerformanceCounter.
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

// Calls `work` and `bare` alternately, `rounds` times each (once with --smoke), and reports the
// medians of the time of one operation. Each call does its operation `perCall` times.
template <class Work, class Bare>
void compare(const std::string& what, int rounds, int perCall, Work work, Bare bare,
             double target = 0) {
    std::vector<double> workTimes;
    std::vector<double> bareTimes;
    work();
    bare();
    for (int round = repetitions(rounds); round > 0; --round) {
        workTimes.push_back(nanoseconds(work) / perCall);
        bareTimes.push_back(nanoseconds(bare) / perCall);
    }
    report({.name = what, .own = median(workTimes), .other = median(bareTimes), .target = target});
}

}  // namespace vek_bench
