#include "vek/proc/program.h"

#include "tests/support/open_handles.h"
#include "tests/vek/proc/inherited_pipes.h"
#include "tests/vek/proc/own_streams.h"
#include "tests/vek/proc/proc_test.h"
#include "tests/vek/proc/temporary_file.h"

namespace {

using vek::OsError;
using vek::RuntimeError;
using vek::UsageError;
using vek::proc::Child;
using vek::proc::Program;
using vek::test::childProgram;
using vek::test::NamedEvent;
using vek::test::TemporaryFile;

class ProgramTest : public vek::test::ProcTest {
  protected:
    static std::string chosen(const Program& program) { return program.getArguments(true)[0]; }
};

// Choice of the program.

TEST_F(ProgramTest, ProgramIsTakenAsItIsNamedIfThereIsSuchAFile) {
    Program program;
    EXPECT_TRUE(program.setProgram(childProgram(), false));
    EXPECT_EQ(chosen(program), childProgram());
    // A directory also counts.
    EXPECT_TRUE(program.setProgram("C:\\windows", true));
    EXPECT_EQ(chosen(program), "C:\\windows");
}

TEST_F(ProgramTest, OtherProgramIsSearchedForByItsLastComponent) {
    Program program;
    ASSERT_TRUE(program.setProgram("cmd", true));
    const std::string found = chosen(program);
    EXPECT_EQ(found.substr(found.size() - 8), "\\cmd.exe");
    EXPECT_TRUE(program.setProgram("C:\\no\\such\\directory\\cmd", true));
    EXPECT_EQ(chosen(program), found);
    // The suffix is always appended.
    EXPECT_FALSE(program.setProgram("cmd.exe", false));
}

TEST_F(ProgramTest, ProgramThatIsNotFoundLeavesNone) {
    Program program;
    program.setArguments({"former", "argument"}, true);
    EXPECT_FALSE(program.setProgram("no-such-program", false));
    EXPECT_EQ(program.getArguments(true), (std::vector<std::string>{"", "argument"}));
    program.setArguments({"former"}, true);
    EXPECT_EQ(thrown<RuntimeError>([&] { program.setProgram("C:\\x\\no-such-program", true); }),
              "Couldn't find the 'C:\\x\\no-such-program' program");
    EXPECT_EQ(chosen(program), "");
    EXPECT_THROW(program.run(true), UsageError);
    EXPECT_FALSE(program.setProgram("", false));
}

// Flags.

struct Combination {
    std::uint32_t flags;
    const char* types;
};

TEST_F(ProgramTest, FlagsChooseTheStreamsThePipeBeforeTheNullDeviceBeforeTheKeeping) {
    using P = Program;
    constexpr const char* file = "1 1 1 ";
    constexpr const char* null = "2 2 2 ";
    constexpr const char* pipe = "3 3 3 ";
    constexpr std::uint32_t pipes = P::StdinPipe | P::StdoutPipe | P::StderrPipe;
    constexpr std::uint32_t nulls = P::StdinNull | P::StdoutNull | P::StderrNull;
    constexpr std::uint32_t keeps = P::KeepStdin | P::KeepStdout | P::KeepStderr;
    const Combination combinations[] = {
        {0, file},
        {nulls, null},
        {pipes, pipe},
        {pipes | nulls | keeps, pipe},
        {pipes | keeps, pipe},
        {nulls | keeps, null},
        {P::StdinPipe, "3 1 1 "},
        {P::StdoutPipe, "1 3 1 "},
        {P::StderrPipe, "1 1 3 "},
        {P::StdinNull, "2 1 1 "},
        {P::StdoutNull, "1 2 1 "},
        {P::StderrNull, "1 1 2 "},
        {P::MergeStderr, file},
        {P::MergeStderr | P::StdoutPipe, "1 3 1 "},
        {P::MergeStderr | P::StderrPipe, "1 1 3 "},
        {P::MergeStderr | P::StdoutPipe | P::StderrPipe, "1 3 3 "},
    };
    const TemporaryFile result;
    const TemporaryFile own;
    const vek::test::OwnStreams streams(own.handle());
    Program program;
    prepare(program, {"streams", result.path});
    for (const Combination& combination : combinations) {
        program.start(combination.flags);
        EXPECT_TRUE(program.finish());
        EXPECT_EQ(result.contents(), combination.types) << combination.flags;
    }
}

TEST_F(ProgramTest, KeepFlagsLeaveWhatWasSetAndTheOthersForgetIt) {
    using P = Program;
    const Combination combinations[] = {
        {P::KeepStdin | P::KeepStdout | P::KeepStderr, "2 2 2 "},
        {P::KeepStdin, "2 1 1 "},
        {P::KeepStdout, "1 2 1 "},
        {P::KeepStderr, "1 1 2 "},
    };
    vek::fs::File null;
    null.open("nul", vek::fs::Access::readWrite);
    const TemporaryFile result;
    const TemporaryFile own;
    const vek::test::OwnStreams streams(own.handle());
    for (const Combination& combination : combinations) {
        Program program;
        prepare(program, {"streams", result.path});
        program.setStdinHandle(null.nativeHandle());
        program.setStdoutHandle(null.nativeHandle());
        program.setStderrHandle(null.nativeHandle());
        program.start(combination.flags);
        EXPECT_TRUE(program.finish());
        EXPECT_EQ(result.contents(), combination.types) << combination.flags;
        // The handle was reset: the keep flag now has nothing to keep.
        program.start(P::KeepStdin | P::KeepStdout | P::KeepStderr);
        EXPECT_TRUE(program.finish());
        EXPECT_EQ(result.contents(), combination.types) << combination.flags;
    }
}

TEST_F(ProgramTest, EndsOfFormerPipesAreNotKept) {
    const TemporaryFile result;
    const TemporaryFile own;
    const vek::test::OwnStreams streams(own.handle());
    for (const std::uint32_t pipes : {0x007u, 0x047u}) {
        Program program;
        prepare(program, {"exit", "0"});
        program.start(pipes);
        program.finish();
        prepare(program, {"streams", result.path});
        program.start(Program::KeepStdin | Program::KeepStdout | Program::KeepStderr);
        EXPECT_TRUE(program.finish());
        EXPECT_EQ(result.contents(), "1 1 1 ");
    }
}

TEST_F(ProgramTest, ChildHasOnlyItsOwnEndsOfThePipes) {
    Program program;
    prepare(program, {"pipes"});
    std::string input;
    std::string output;
    std::string errors;
    const int others = vek::test::pipesWithoutOurs();
    EXPECT_TRUE(program.exchange(&input, &output, &errors));
    EXPECT_EQ(output, std::to_string(others + 3));
    output.clear();
    EXPECT_TRUE(program.exchange(nullptr, &output, nullptr));
    EXPECT_EQ(output, std::to_string(others + 1));
}

// Start and finish.

TEST_F(ProgramTest, SecondStartWhileAChildIsThereThrows) {
    const NamedEvent end;
    Program program;
    prepare(program, {"wait", end.name, "0"});
    program.start(Program::StdoutNull);
    const DWORD id = program.getProcess().dwProcessId;
    EXPECT_EQ(thrown<UsageError>([&] { program.start(Program::StdinPipe); }),
              "Usage error: A child is still present");
    EXPECT_EQ(program.getProcess().dwProcessId, id);
    end.set();
    EXPECT_TRUE(program.finish());
    // Again after `finish`.
    program.start(Program::StdoutNull);
    EXPECT_TRUE(program.finish());
}

TEST_F(ProgramTest, StartThatFailsClosesItsPipesWithoutAReport) {
    Program program;
    // Starts the shepherd, so that its handles are counted before.
    prepare(program, {"exit", "0"});
    EXPECT_TRUE(program.run(true));
    program.setArguments({"C:\\no\\such\\program.exe"}, true);
    EXPECT_THROW(program.start(0), OsError);
    const std::size_t before = support::openHandles().size();
    testing::internal::CaptureStderr();
    for (const std::uint32_t flags : {0x007u, 0x047u, 0x002u}) {
        EXPECT_THROW(program.start(flags), OsError);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(support::openHandles().size(), before);
    EXPECT_THROW(program.write("x", 1), OsError) << "no stream is open";
    EXPECT_NO_THROW(program.closeStdin());
}

TEST_F(ProgramTest, FinishTellsSuccessAndKeepsTheStatus) {
    Program program;
    EXPECT_FALSE(program.getStatus().finished);
    EXPECT_THROW(program.finish(), UsageError);
    prepare(program, {"exit", "0"});
    program.start(0);
    EXPECT_TRUE(program.finish());
    EXPECT_TRUE(program.getStatus().succeeded());
    prepare(program, {"exit", "3"});
    program.start(0);
    EXPECT_FALSE(program.finish());
    EXPECT_EQ(program.getStatus().code, 3u);
    prepare(program, {"sleep", "60000", "0"});
    program.start(0);
    Child::kill(program.getProcess().dwProcessId);
    EXPECT_FALSE(program.finish());
    std::ostringstream text;
    text << program.getStatus();
    EXPECT_EQ(text.str(), "finished: 1\nkilled: 1");
}

TEST_F(ProgramTest, FinishClosesThePipes) {
    Program program;
    prepare(program, {"exit", "0"});
    program.start(0);
    program.finish();
    const std::size_t before = support::openHandles().size();
    for (int i = 0; i < 3; ++i) {
        program.start(Program::StdinPipe | Program::StdoutPipe | Program::StderrPipe);
        program.finish();
        EXPECT_EQ(support::openHandles().size(), before);
    }
    std::string text = "former";
    EXPECT_THROW(program.readOutput(text, 10), OsError);
    EXPECT_EQ(text, "");
}

TEST_F(ProgramTest, RunGoesToTheEndSilentlyOrNot) {
    const TemporaryFile result;
    const TemporaryFile own;
    const vek::test::OwnStreams streams(own.handle());
    Program program;
    prepare(program, {"streams", result.path});
    EXPECT_TRUE(program.run(false));
    EXPECT_EQ(result.contents(), "1 1 1 ");
    EXPECT_TRUE(program.run(true));
    EXPECT_EQ(result.contents(), "1 2 2 ");
    prepare(program, {"exit", "1"});
    EXPECT_FALSE(program.run(true));
}

TEST_F(ProgramTest, CommandLineJoinsTheArgumentsForMessages) {
    Program program;
    EXPECT_EQ(program.commandLine(), "");
    program.setArguments({"C:\\a b.exe", "", "c d"}, true);
    EXPECT_EQ(program.commandLine(), "C:\\a b.exe  c d");
}

// Reading and writing.

TEST_F(ProgramTest, ReadsOnceOrUntilTheSizeIsReached) {
    Program program;
    prepare(program, {"copy"});
    program.start(Program::StdinPipe | Program::StdoutPipe | Program::StderrPipe);
    EXPECT_EQ(program.write("abc", 3), 3u);
    char buffer[16] = {};
    EXPECT_EQ(program.read(buffer, 3, true, true), 3u);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(program.read(buffer, sizeof buffer, false, false), 3u);
    EXPECT_EQ(program.write("defgh", 5), 5u);
    // The data arrives in two pieces, so one read isn't enough.
    EXPECT_EQ(program.read(buffer, 2, false, true), 2u);
    EXPECT_EQ(program.read(buffer + 2, 3, true, true), 3u);
    EXPECT_STREQ(buffer, "defgh");
    program.closeStdin();
    // To the end of the stream, which comes before `size`.
    EXPECT_EQ(program.read(buffer, sizeof buffer, true, true), 0u);
    EXPECT_EQ(program.read(buffer, sizeof buffer, true, false), 5u);
    EXPECT_TRUE(program.finish());
}

TEST_F(ProgramTest, ReadsAllOfManyPieces) {
    Program program;
    prepare(program, {"say", std::string(5000, 'o'), "", "0"});
    program.start(Program::StdoutPipe);
    std::string all(6000, '\0');
    EXPECT_EQ(program.read(all.data(), 6000, true, true), 5000u);
    EXPECT_EQ(all.substr(0, 5000), std::string(5000, 'o'));
    EXPECT_TRUE(program.finish());
    program.start(Program::StdoutPipe);
    EXPECT_EQ(program.read(all.data(), 5000, true, true), 5000u);
    EXPECT_TRUE(program.finish());
}

TEST_F(ProgramTest, ReadsTextsCutToWhatArrived) {
    Program program;
    prepare(program, {"say", "output", "errors", "0"});
    program.start(Program::StdoutPipe | Program::StderrPipe);
    std::string text = "former";
    EXPECT_EQ(program.readOutput(text, 3), 3u);
    EXPECT_EQ(text, "out");
    EXPECT_EQ(program.readOutput(text, 100), 3u);
    EXPECT_EQ(text, "put");
    EXPECT_EQ(program.readOutput(text, 100), 0u);
    EXPECT_EQ(text, "");
    EXPECT_EQ(program.readErrors(text, 100), 6u);
    EXPECT_EQ(text, "errors");
    EXPECT_TRUE(program.finish());
}

TEST_F(ProgramTest, WritesAllAndTheChildSeesTheEndOfItsInput) {
    Program program;
    prepare(program, {"count"});
    program.start(Program::StdinPipe | Program::StdoutPipe);
    const std::string text(100000, 'x');
    EXPECT_EQ(program.write(text.data(), 100000), 100000u);
    EXPECT_EQ(program.write(text.data(), 0), 0u);
    program.closeStdin();
    std::string count;
    program.readOutput(count, 100);
    EXPECT_EQ(count, "100000");
    EXPECT_TRUE(program.finish());
}

TEST_F(ProgramTest, WritingToAChildThatHasClosedItsInputThrows) {
    Program program;
    prepare(program, {"close-input", "0"});
    program.start(Program::StdinPipe | Program::StdoutPipe);
    std::string text;
    program.readOutput(text, 100);
    EXPECT_EQ(text, "closed");
    EXPECT_THROW(program.write("x", 1), OsError);
    EXPECT_TRUE(program.finish());
}

}  // namespace
