// process_start: how long a program takes from its start to its end, beside another one.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "vek/base/windows.h"

namespace {

constexpr char manual[] =
    "process_start [--help] [--runs N] PROGRAM BASELINE\n"
    "\n"
    "Starts both programs N times (default 40) by turns, each with an empty command tail, and\n"
    "prints the median of the times from start to end of each, in milliseconds, and the ratio of\n"
    "the two medians. Ends with 0, or with 2 if a program can't be started or doesn't end with "
    "0.\n";

constexpr int warmUpRuns = 3;
constexpr DWORD endLimitMs = 30000;

double nowMs() {
    LARGE_INTEGER now;
    LARGE_INTEGER frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return 1000.0 * static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

// Milliseconds from the start of `program` to its end.
double timeOneRun(const std::string& program) {
    std::string commandLine = "\"" + program + "\"";
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    const double start = nowMs();
    if (CreateProcessA(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                       nullptr, &startup, &started) == 0) {
        throw std::runtime_error("can't start " + program + ", error " +
                                 std::to_string(GetLastError()));
    }
    const DWORD waited = WaitForSingleObject(started.hProcess, endLimitMs);
    const double end = nowMs();
    DWORD exitCode = STILL_ACTIVE;
    GetExitCodeProcess(started.hProcess, &exitCode);
    if (waited != WAIT_OBJECT_0) {
        TerminateProcess(started.hProcess, 1);
    }
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    if (waited != WAIT_OBJECT_0 || exitCode != 0) {
        throw std::runtime_error(program + " didn't end with 0 but " + std::to_string(exitCode));
    }
    return end - start;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

void measure(const std::string& program, const std::string& baseline, int runs) {
    std::vector<double> programTimes;
    std::vector<double> baselineTimes;
    for (int i = -warmUpRuns; i < runs; ++i) {
        const double programMs = timeOneRun(program);
        const double baselineMs = timeOneRun(baseline);
        if (i >= 0) {
            programTimes.push_back(programMs);
            baselineTimes.push_back(baselineMs);
        }
    }
    const double programMedian = median(programTimes);
    const double baselineMedian = median(baselineTimes);
    std::printf("program %.2f ms\nbaseline %.2f ms\nratio %.2f\n", programMedian, baselineMedian,
                programMedian / baselineMedian);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> programs;
    int runs = 40;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--help") {
            std::fputs(manual, stdout);
            return 0;
        }
        if (argument == "--runs" && i + 1 < argc) {
            runs = std::atoi(argv[++i]);
        } else {
            programs.push_back(argument);
        }
    }
    if (programs.size() != 2 || runs < 1) {
        std::fputs(manual, stderr);
        return 2;
    }
    try {
        measure(programs[0], programs[1], runs);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "process_start: %s\n", error.what());
        return 2;
    }
}
