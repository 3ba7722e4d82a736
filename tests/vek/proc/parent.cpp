// Starts children in a process of its own, for tests of what a process can do only once.
//
//   proc_parent replace PROGRAM ARGUMENT...   is replaced by PROGRAM
//   proc_parent exit EVENT CODE PROGRAM       starts PROGRAM, which waits for EVENT, and calls exit
//                                             without the end of the platform object
//   proc_parent jobs PROGRAM                  goes into a job; writes for a child without and one
//                                             with breakaway whether it is in a job
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "vek/base/windows.h"
#include "vek/pal.h"
#include "vek/proc/program.h"

namespace {

constexpr int badUsage = 99;
constexpr int noJob = 98;

int replace(const std::vector<std::string>& arguments) {
    vek::proc::Child child;
    child.setArguments(arguments, true);
    child.start(true);
    return badUsage;
}

[[noreturn]] void leaveByExit(const std::vector<std::string>& arguments) {
    vek::proc::Child child;
    child.setArguments({arguments[2], "wait", arguments[0], "0"}, true);
    child.start();
    std::exit(std::stoi(arguments[1]));
}

int compareJobs(const std::string& program) {
    const HANDLE job = CreateJobObjectA(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_BREAKAWAY_OK;
    if (SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits) ==
            0 ||
        AssignProcessToJobObject(job, GetCurrentProcess()) == 0) {
        return noJob;
    }
    for (const bool outside : {false, true}) {
        vek::proc::Program child;
        child.setArguments({program, "job"}, true);
        child.setBreakaway(outside);
        child.run(false);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    // Leaked by `exit`, as in any program that ends with it.
    const auto pal = std::make_unique<vek::VekPal>(false, 0, 0, nullptr);
    const std::string command = argc > 2 ? argv[1] : "";
    const std::vector<std::string> arguments(argv + (argc > 2 ? 2 : argc), argv + argc);
    try {
        if (command == "replace") {
            return replace(arguments);
        }
        if (command == "exit" && arguments.size() > 2) {
            leaveByExit(arguments);
        }
        if (command == "jobs") {
            return compareJobs(arguments[0]);
        }
    } catch (const std::exception& error) {
        std::cerr << error.what() << std::endl;
    }
    return badUsage;
}
