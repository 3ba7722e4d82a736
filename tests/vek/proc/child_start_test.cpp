#include <iostream>
#include <streambuf>

#include "tests/support/open_handles.h"
#include "tests/vek/proc/own_streams.h"
#include "tests/vek/proc/proc_test.h"
#include "tests/vek/proc/temporary_file.h"
#include "vek/fs/null_device.h"
#include "vek/proc/shepherd.h"

namespace {

using vek::OsError;
using vek::RuntimeError;
using vek::UsageError;
using vek::proc::Child;
using vek::proc::ExitStatus;
using vek::proc::Pipe;
using vek::proc::PipeEnd;
using vek::proc::Program;
using vek::test::TemporaryFile;
using Strings = std::vector<std::string>;

class ChildStart : public vek::test::ProcTest {
  protected:
    // Returns the code of the OsError that `start` throws.
    static std::uint32_t startError(Child& child) {
        try {
            child.start();
        } catch (const OsError& error) {
            return error.code();
        }
        ADD_FAILURE() << "it started";
        return 0;
    }

    static bool isNotRunning(const Child& child) {
        const PROCESS_INFORMATION& process = child.getProcess();
        return process.hProcess == INVALID_HANDLE_VALUE &&
               process.hThread == INVALID_HANDLE_VALUE && process.dwProcessId == 0 &&
               process.dwThreadId == 0;
    }
};

TEST_F(ChildStart, NeedsAProgram) {
    Child child;
    EXPECT_EQ(thrown<UsageError>([&] { child.start(); }), "Usage error: No executable specified");
    child.setArguments({"argument"}, false);
    EXPECT_EQ(thrown<UsageError>([&] { child.start(); }), "Usage error: No executable specified");
    EXPECT_EQ(vek::proc::currentShepherd(), nullptr);
}

TEST_F(ChildStart, HoldsTheChildUntilItIsCollected) {
    Child child;
    EXPECT_TRUE(isNotRunning(child));
    prepare(child, {"exit", "7"});
    child.start();
    EXPECT_NE(child.getProcess().dwProcessId, 0u);
    EXPECT_NE(child.getProcess().dwThreadId, 0u);
    EXPECT_EQ(waited(child).code, 7u);
    EXPECT_TRUE(isNotRunning(child));
}

TEST_F(ChildStart, CollectedChildCanBeStartedAgain) {
    Child child;
    for (const char* code : {"1", "2", "3"}) {
        prepare(child, {"exit", code});
        child.start();
        EXPECT_EQ(std::to_string(waited(child).code), code);
    }
}

TEST_F(ChildStart, MissingProgramThrowsTheSystemsErrorAndLeavesNoChild) {
    Child child;
    // Starts the shepherd, so that its handles are counted before.
    prepare(child, {"exit", "0"});
    child.start();
    waited(child);
    child.setArguments({"C:\\no\\such\\program.exe"}, true);
    // The first error text opens handles of the system's own.
    startError(child);
    const std::size_t before = support::openHandles().size();
    const std::uint32_t error = startError(child);
    EXPECT_TRUE(error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) << error;
    EXPECT_TRUE(isNotRunning(child));
    EXPECT_EQ(support::openHandles().size(), before);
}

TEST_F(ChildStart, FileThatIsNoProgramThrows193) {
    const TemporaryFile text;
    support::writeFile(text.path + ".exe", "this is no program");
    Child child;
    child.setArguments({text.path + ".exe"}, true);
    EXPECT_EQ(startError(child), static_cast<std::uint32_t>(ERROR_BAD_EXE_FORMAT));
    DeleteFileA((text.path + ".exe").c_str());
}

TEST_F(ChildStart, ZeroBytesAreRefusedInsteadOfCut) {
    const std::string cut("a\0b", 3);
    Child argument;
    prepare(argument, {"exit", cut});
    EXPECT_EQ(startError(argument), static_cast<std::uint32_t>(ERROR_INVALID_PARAMETER));
    Child directory;
    prepare(directory, {"exit", "0"});
    directory.setWorkingDirectory(cut);
    EXPECT_EQ(startError(directory), static_cast<std::uint32_t>(ERROR_INVALID_PARAMETER));
    Child environment;
    prepare(environment, {"exit", "0"});
    for (const std::string& entry : {cut, std::string()}) {
        environment.setEnvironment({"A=1", entry});
        EXPECT_EQ(startError(environment), static_cast<std::uint32_t>(ERROR_INVALID_PARAMETER));
        EXPECT_TRUE(isNotRunning(environment));
    }
}

// Arguments.

TEST_F(ChildStart, ArgumentsAreReplacedFromTheProgramOrBehindIt) {
    Child child;
    EXPECT_EQ(child.getArguments(true), (Strings{""}));
    EXPECT_EQ(child.getArguments(false), Strings());
    child.setArguments({"a", "b"}, false);
    EXPECT_EQ(child.getArguments(true), (Strings{"", "a", "b"}));
    child.setArguments({"p", "q"}, true);
    EXPECT_EQ(child.getArguments(true), (Strings{"p", "q"}));
    EXPECT_EQ(child.getArguments(false), (Strings{"q"}));
    child.setArguments({}, false);
    EXPECT_EQ(child.getArguments(true), (Strings{"p"}));
    child.setArguments({}, true);
    EXPECT_EQ(child.getArguments(true), (Strings{""}));
}

TEST_F(ChildStart, ArgumentWithABlankArrivesWholeAndAQuotationMarkIsNotProtected) {
    Program program;
    prepare(program, {"arguments", "a b", "", "c\"d e\"f"});
    const std::string first = '"' + vek::test::childProgram() + '"';
    // The quotation mark ends the quoting: the blank after it separates two arguments.
    EXPECT_EQ(outputOf(program), first + " \"arguments\" \"a b\" \"\" \"c\"d e\"f\"\n" +
                                     "[arguments]\n[a b]\n[]\n[cd]\n[ef]\n");
}

TEST_F(ChildStart, ChildInheritsTheEnvironmentUnlessItHasOneOfItsOwn) {
    SetEnvironmentVariableA("VEK_PROC_TEST", "inherited");
    Program program;
    prepare(program, {"environment"});
    EXPECT_NE(outputOf(program).find("VEK_PROC_TEST=inherited\n"), std::string::npos);
    program.setEnvironment({"VEK_FIRST=1", "VEK_SECOND=a b"});
    const std::string own = outputOf(program);
    EXPECT_NE(own.find("VEK_FIRST=1\nVEK_SECOND=a b\n"), std::string::npos) << own;
    EXPECT_EQ(own.find("VEK_PROC_TEST"), std::string::npos);
    SetEnvironmentVariableA("VEK_PROC_TEST", nullptr);
}

TEST_F(ChildStart, ChildStartsInItsWorkingDirectory) {
    Program program;
    prepare(program, {"directory"});
    char own[MAX_PATH];
    GetCurrentDirectoryA(MAX_PATH, own);
    EXPECT_EQ(outputOf(program), own);
    program.setWorkingDirectory(support::temporaryDirectory());
    EXPECT_EQ(outputOf(program), support::temporaryDirectory());
    program.setWorkingDirectory("C:\\no\\such\\directory");
    EXPECT_NE(startError(program), 0u);
}

// Standard streams.

// The types of a child's streams, in the order input, output, errors.
constexpr const char* allFiles = "1 1 1 ";

TEST_F(ChildStart, StreamsThatAreNotSetAreThoseOfThisProcess) {
    const TemporaryFile result;
    const TemporaryFile own;
    Child child;
    prepare(child, {"streams", result.path});
    {
        const vek::test::OwnStreams streams(own.handle());
        child.start();
    }
    EXPECT_TRUE(waited(child).succeeded());
    EXPECT_EQ(result.contents(), allFiles);
}

TEST_F(ChildStart, ProcessWithoutStreamsStartsAChildWithoutThem) {
    const TemporaryFile result;
    Child child;
    prepare(child, {"streams", result.path});
    {
        const vek::test::OwnStreams streams(nullptr);
        child.start();
    }
    EXPECT_TRUE(waited(child).succeeded());
    EXPECT_EQ(result.contents(), "0 0 0 ");
}

TEST_F(ChildStart, StreamsMayBeInheritableOrNotAndStayAsTheyAre) {
    const TemporaryFile file;
    for (const DWORD inheritable : {DWORD{0}, DWORD{HANDLE_FLAG_INHERIT}}) {
        SetHandleInformation(file.handle(), HANDLE_FLAG_INHERIT, inheritable);
        const std::size_t before = support::openHandles().size();
        Child child;
        prepare(child, {"say", "out ", "err ", "0"});
        child.setStdoutHandle(file.handle());
        child.setStderrHandle(file.handle());
        child.start();
        EXPECT_TRUE(waited(child).succeeded());
        DWORD flags = 0;
        GetHandleInformation(file.handle(), &flags);
        EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, inheritable);
        if (inheritable != 0) {
            EXPECT_EQ(support::openHandles().size(), before);
        }
    }
    EXPECT_EQ(file.contents(), "out err out err ");
}

TEST_F(ChildStart, OutputsMayBeEndsOfAPipe) {
    Pipe pipe;
    Child child;
    prepare(child, {"say", "out ", "err", "0"});
    child.setStdoutHandle(pipe, PipeEnd::write);
    child.setStderrHandle(pipe, PipeEnd::write);
    child.start();
    EXPECT_TRUE(waited(child).succeeded());
    pipe.closeWriteEnd();
    char text[20] = {};
    DWORD count = 0;
    ReadFile(pipe.readEnd, text, 4, &count, nullptr);
    ReadFile(pipe.readEnd, text + 4, 16, &count, nullptr);
    EXPECT_STREQ(text, "out err");
    EXPECT_THROW(child.setStdoutHandle(pipe, PipeEnd::write), UsageError);
    EXPECT_THROW(child.setStderrHandle(pipe, PipeEnd::write), UsageError);
    // Nobody can write to a read end.
    child.setStdoutHandle(pipe, PipeEnd::read);
    child.setStderrHandle(pipe, PipeEnd::read);
    child.start();
    EXPECT_EQ(waited(child).code, 97u);
    pipe.close();
}

TEST_F(ChildStart, OutputsMayBeTheNullDevice) {
    const TemporaryFile result;
    const TemporaryFile own;
    Child child;
    prepare(child, {"streams", result.path});
    child.setStdoutNull();
    child.setStderrNull();
    {
        const vek::test::OwnStreams streams(own.handle());
        child.start();
    }
    EXPECT_TRUE(waited(child).succeeded());
    EXPECT_EQ(result.contents(), "1 2 2 ");
    prepare(child, {"say", "out", "err", "5"});
    child.start();
    EXPECT_EQ(waited(child).code, 5u);
}

TEST_F(ChildStart, NullDeviceThatIsNotOpenIsAnError) {
    vek::fs::closeNullDevice();
    Child child;
    EXPECT_THROW(child.setStdoutNull(), UsageError);
    EXPECT_THROW(child.setStderrNull(), UsageError);
    Program program;
    prepare(program, {"exit", "0"});
    EXPECT_THROW(program.start(Program::StdinNull), UsageError);
    EXPECT_THROW(Child::execute(vek::test::childProgram(), {"exit"}, Child::NullInput), UsageError);
}

// Processors.

TEST_F(ChildStart, ProcessorsAreCountedFromTheLowestWhateverTheListSays) {
    Program program;
    prepare(program, {"affinity"});
    program.setCpuList({5});
    EXPECT_EQ(outputOf(program), "1");
    program.setCpuList({9, 7});
    EXPECT_EQ(program.getCpuList(), (std::vector<std::uint32_t>{9, 7}));
    EXPECT_EQ(outputOf(program), "3");
}

TEST_F(ChildStart, MoreThan32ProcessorsAreRefusedBeforeAnyProcessIsMade) {
    Child child;
    child.setArguments({"C:\\no\\such\\program.exe"}, true);
    child.setCpuList(std::vector<std::uint32_t>(33, 1));
    EXPECT_EQ(thrown<RuntimeError>([&] { child.start(); }), "Too many CPU affinity settings");
    EXPECT_TRUE(isNotRunning(child));
    EXPECT_NE(vek::proc::currentShepherd(), nullptr);
}

bool has32Processors() {
    SYSTEM_INFO info = {};
    GetSystemInfo(&info);
    return info.dwNumberOfProcessors >= 32;
}

TEST_F(ChildStart, ProcessorsThatCannotBeSetAreReportedAndTheChildRunsOnAll) {
    if (has32Processors()) {
        GTEST_SKIP() << "32 processors can be set here";
    }
    Program program;
    prepare(program, {"affinity"});
    const std::string unrestricted = outputOf(program);
    program.setCpuList(std::vector<std::uint32_t>(32, 0));
    testing::internal::CaptureStderr();
    EXPECT_EQ(outputOf(program), unrestricted);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Couldn't set affinity mask of new child process\n");
}

// Suspends the child's thread once more while the start reports to std::cerr.
class SuspendingReport : public std::streambuf {
  public:
    explicit SuspendingReport(const Child& watched) : child(watched) { std::cerr.rdbuf(this); }
    ~SuspendingReport() override { std::cerr.rdbuf(original); }

    // How often the thread was suspended already.
    DWORD formerCount = 0xFFFFFFFF;

  protected:
    int_type overflow(int_type ch) override { return suspended(ch); }
    std::streamsize xsputn(const char*, std::streamsize size) override {
        suspended(0);
        return size;
    }

  private:
    int_type suspended(int_type ch) {
        if (formerCount == 0xFFFFFFFF) {
            formerCount = SuspendThread(child.getProcess().hThread);
        }
        return ch;
    }

    const Child& child;
    std::streambuf* const original = std::cerr.rdbuf();
};

TEST_F(ChildStart, ChildThatCannotBeSetGoingThrowsAndStaysSuspended) {
    if (has32Processors()) {
        GTEST_SKIP() << "32 processors can be set here";
    }
    Child child;
    prepare(child, {"exit", "0"});
    child.setCpuList(std::vector<std::uint32_t>(32, 0));
    {
        const SuspendingReport report(child);
        EXPECT_THROW(child.start(), OsError);
        // The child had not run when its processors were set.
        EXPECT_EQ(report.formerCount, 1u);
    }
    const PROCESS_INFORMATION process = child.getProcess();
    ASSERT_NE(process.dwProcessId, 0u);
    EXPECT_FALSE(hasEnded(child, 200));
    // Nobody watches it.
    EXPECT_EQ(ResumeThread(process.hThread), 1u);
    EXPECT_TRUE(hasEnded(child));
    EXPECT_FALSE(waitedUpTo(child, 50).finished);
    const std::size_t before = support::openHandles().size();
    EXPECT_EQ(thrown<RuntimeError>([&] { waited(child); }), "Nobody watches this child");
    EXPECT_TRUE(isNotRunning(child));
    EXPECT_EQ(support::openHandles().size(), before - 2);
}

TEST_F(ChildStart, ProgramThatCannotBeSetGoingCountsAsNotStarted) {
    if (has32Processors()) {
        GTEST_SKIP() << "32 processors can be set here";
    }
    Program program;
    prepare(program, {"exit", "6"});
    program.setCpuList(std::vector<std::uint32_t>(32, 0));
    {
        const SuspendingReport report(program);
        EXPECT_THROW(program.start(Program::StdoutPipe), OsError);
    }
    Child::kill(program.getProcess().dwProcessId);
    EXPECT_THROW(program.finish(), UsageError);
    EXPECT_TRUE(isNotRunning(program));
    program.setCpuList({});
    EXPECT_FALSE(program.run(true));
    EXPECT_EQ(program.getStatus().code, 6u);
}

// A child that nobody waits for.

TEST_F(ChildStart, ChildThatWasNeverWaitedForKeepsItsHandles) {
    PROCESS_INFORMATION process = {};
    {
        Child child;
        prepare(child, {"exit", "4"});
        child.start();
        process = child.getProcess();
    }
    EXPECT_EQ(WaitForSingleObject(process.hProcess, vek::test::limitMs), WAIT_OBJECT_0);
    EXPECT_NE(CloseHandle(process.hThread), 0);
    std::uint32_t code = 0;
    EXPECT_TRUE(vek::proc::currentShepherd()->waitForChild(process, code, nullptr));
    EXPECT_EQ(code, 4u);
    EXPECT_NE(CloseHandle(process.hProcess), 0);
}

// Runs in one go.

TEST_F(ChildStart, ExecuteRunsToTheEnd) {
    const ExitStatus status = Child::execute(vek::test::childProgram(), {"exit", "9"});
    EXPECT_TRUE(status.finished);
    EXPECT_FALSE(status.killed);
    EXPECT_EQ(status.code, 9u);
    EXPECT_THROW(Child::execute("C:\\no\\such\\program.exe", {}), OsError);
    EXPECT_THROW(Child::execute("", {}), UsageError);
}

TEST_F(ChildStart, ExecuteLeadsTheStreamsOfItsFlagsToTheNullDevice) {
    const TemporaryFile result;
    const TemporaryFile own;
    const vek::test::OwnStreams streams(own.handle());
    for (std::uint32_t flags = 0; flags < 8; ++flags) {
        EXPECT_TRUE(
            Child::execute(vek::test::childProgram(), {"streams", result.path}, flags).succeeded());
        const std::string expected = std::string((flags & 4) != 0 ? "2 " : "1 ") +
                                     ((flags & 1) != 0 ? "2 " : "1 ") +
                                     ((flags & 2) != 0 ? "2 " : "1 ");
        EXPECT_EQ(result.contents(), expected) << flags;
    }
}

}  // namespace
