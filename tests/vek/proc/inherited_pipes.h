// Counts the pipe handles of a child.
#pragma once

#include <string>

#include "tests/vek/proc/proc_test.h"
#include "tests/vek/proc/temporary_file.h"

namespace vek::test {

// Returns the number of pipe handles of a child without pipes of its own: those that this process
// has itself inherited, such as its output. Call it while no other thread starts children.
inline int pipesWithoutOurs() {
    const TemporaryFile file;
    proc::Program program;
    program.setArguments({childProgram(), "pipes"}, true);
    program.setStdoutHandle(file.handle());
    program.start(proc::Program::KeepStdout);
    EXPECT_TRUE(program.finish());
    return std::stoi(file.contents());
}

}  // namespace vek::test
