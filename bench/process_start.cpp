// process_start: the time from the start of a program to its end, compared with another program.
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "vek/base/windows.h"

namespace {

constexpr int warmUpRuns = 3;
constexpr int runs = 40;
constexpr DWORD endLimitMs = 30000;

// Starts `program` with an empty command tail and waits for its end. Returns the milliseconds.
// Throws if it can't be started or doesn't end with 0.
double timeOneRun(const std::string& program) {
    std::string commandLine = "\"" + program + "\"";
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    DWORD waited = WAIT_FAILED;
    const double time = vek_bench::nanoseconds([&] {
        if (CreateProcessA(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                           nullptr, &startup, &started) == 0) {
            throw std::runtime_error("can't start " + program + ", error " +
                                     std::to_string(GetLastError()));
        }
        waited = WaitForSingleObject(started.hProcess, endLimitMs);
    });
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
    return time / 1e6;
}

std::string ownFolder() {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string program = path;
    return program.substr(0, program.rfind('\\') + 1);
}

void measureAll() {
    const std::vector<std::string>& named = vek_bench::options.arguments;
    vek_bench::require(named.empty() || named.size() == 2, "name no program, or two; see --help");
    const std::string program = named.empty() ? ownFolder() + "tolmarhlp.exe" : named[0];
    const std::string baseline = named.empty() ? ownFolder() + "empty_winmain.exe" : named[1];
    std::vector<double> programTimes;
    std::vector<double> baselineTimes;
    const int warmUp = vek_bench::repetitions(warmUpRuns, 0);
    for (int i = vek_bench::repetitions(runs, 2) + warmUp; i > 0; --i) {
        const double programMs = timeOneRun(program);
        const double baselineMs = timeOneRun(baseline);
        if (i <= vek_bench::repetitions(runs, 2)) {
            programTimes.push_back(programMs);
            baselineTimes.push_back(baselineMs);
        }
    }
    const double own = vek_bench::median(programTimes);
    const double other = vek_bench::median(baselineTimes);
    vek_bench::report({.name = "start to end of " + program.substr(program.find_last_of("\\/") + 1),
                       .own = own,
                       .other = other,
                       .target = 1.5,
                       .otherName = "an empty program",
                       .unit = "ms"});
    if (!vek_bench::options.json) {
        std::printf("program %.2f ms\nbaseline %.2f ms\nratio %.2f\n", own, other, own / other);
    }
}

}  // namespace

int main(int argc, char** argv) {
    return vek_bench::runBenchmark(argc, argv,
                                   "process_start [--smoke] [--json] [PROGRAM BASELINE]\n"
                                   "\n"
                                   "The time from the start of PROGRAM to its end, compared with "
                                   "BASELINE's; without them that\n"
                                   "of tolmarhlp.exe, compared with a program that does nothing.\n",
                                   measureAll, 2);
}
