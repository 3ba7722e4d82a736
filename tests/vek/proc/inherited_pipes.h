// Which pipes a child has.
#pragma once

#include <string>

#include "tests/vek/proc/proc_test.h"
#include "tests/vek/proc/temporary_file.h"

namespace vek::test {

// How many handles of pipes a child has that none was made for: those that this process itself has
// inherited, such as its own output. To be asked while no other thread starts children.
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
