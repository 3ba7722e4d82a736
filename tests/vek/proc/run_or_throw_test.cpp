#include <algorithm>

#include <fcntl.h>
#include <io.h>

#include "tests/vek/proc/proc_test.h"

namespace {

using vek::OsError;
using vek::RuntimeError;
using vek::UsageError;
using vek::proc::Program;

class RunOrThrow : public vek::test::ProcTest {
  protected:
    // Returns the message of the exception that a run throws, without the command line.
    std::string failureOf(const std::vector<std::string>& arguments, std::uint32_t flags) {
        prepare(program, arguments);
        const std::string text = thrown<RuntimeError>([&] { program.runOrThrow(flags); });
        const std::string begin = "'" + program.commandLine() + "' ";
        EXPECT_EQ(text.substr(0, begin.size()), begin);
        return text.substr(std::min(begin.size(), text.size()));
    }

    Program program;
};

TEST_F(RunOrThrow, SuccessThrowsNothing) {
    prepare(program, {"say", "", "a warning", "0"});
    EXPECT_NO_THROW(program.runOrThrow(Program::StdoutNull));
    EXPECT_TRUE(program.getStatus().succeeded());
    EXPECT_EQ(program.getProcess().dwProcessId, 0u);
}

TEST_F(RunOrThrow, FailureTellsTheCommandLineTheCodeAndTheErrors) {
    EXPECT_EQ(failureOf({"say", "not this", "  it broke\nbadly \n\n", "3"}, Program::StdoutNull),
              "failed (3):\n\nit broke\nbadly");
    EXPECT_EQ(program.getStatus().code, 3u);
}

TEST_F(RunOrThrow, CodeIsASignedNumber) {
    EXPECT_EQ(failureOf({"exit", "3221225477"}, 0), "failed (-1073741819):\n\n");
}

TEST_F(RunOrThrow, KilledChildHasFailedWithTheKillCode) {
    EXPECT_EQ(failureOf({"exit", "37125"}, 0), "failed (37125):\n\n");
}

TEST_F(RunOrThrow, MergedOutputsAreBothCollected) {
    EXPECT_EQ(failureOf({"say", "out ", "err", "3"}, Program::StdoutPipe | Program::MergeStderr),
              "failed (3):\n\nout err");
    // Without StdoutPipe there is no pipe to merge into.
    EXPECT_EQ(failureOf({"say", "out ", "err", "3"}, Program::StdoutNull | Program::MergeStderr),
              "failed (3):\n\nerr");
}

TEST_F(RunOrThrow, ErrorsAreReadAsTheRuntimeReadsText) {
    EXPECT_EQ(failureOf({"say", "", "one\r\ntwo\n\nlast", "1"}, Program::StdoutNull),
              "failed (1):\n\none\ntwo\n\nlast");
}

TEST_F(RunOrThrow, CollectsMoreThanAPipeHolds) {
    prepare(program, {"flood", "100000"});
    // The child reads its input, which has ended: nothing fails.
    EXPECT_NO_THROW(program.runOrThrow(Program::StdoutNull | Program::StdinNull));
    const std::string large(20000, 'e');
    EXPECT_EQ(failureOf({"say", "", large, "2"}, Program::StdoutNull), "failed (2):\n\n" + large);
}

TEST_F(RunOrThrow, ProgramThatCannotBeStartedThrowsAsStart) {
    program.setArguments({"C:\\no\\such\\program.exe"}, true);
    EXPECT_THROW(program.runOrThrow(0), OsError);
    program.setArguments({}, true);
    EXPECT_THROW(program.runOrThrow(0), UsageError);
}

TEST_F(RunOrThrow, RuntimeWithoutFilesThrowsAndTheChildStaysCollectable) {
    std::vector<int> files;
    for (int file = _open("nul", _O_RDONLY); file != -1; file = _open("nul", _O_RDONLY)) {
        files.push_back(file);
    }
    EXPECT_GT(files.size(), 100u);
    prepare(program, {"exit", "6"});
    EXPECT_EQ(thrown<OsError>([&] { program.runOrThrow(Program::StdoutNull); }),
              OsError(ERROR_TOO_MANY_OPEN_FILES).what());
    for (const int file : files) {
        _close(file);
    }
    EXPECT_FALSE(program.finish());
    EXPECT_EQ(program.getStatus().code, 6u);
}

}  // namespace
