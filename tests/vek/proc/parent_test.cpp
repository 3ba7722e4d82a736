// Effects on the calling process itself, tested in a process of its own.
#include "tests/vek/proc/proc_test.h"

namespace {

using vek::proc::Program;
using vek::test::childProgram;
using vek::test::NamedEvent;

class ParentTest : public vek::test::ProcTest {
  protected:
    void prepareParent(const std::vector<std::string>& arguments) {
        parent.setArguments({vek::programDirectory() + "\\proc_parent.exe"}, true);
        parent.setArguments(arguments, false);
    }

    Program parent;
};

TEST_F(ParentTest, ChildTakesThePlaceOfAProcessThatEndsWithTheKillCode) {
    prepareParent({"replace", childProgram(), "copy"});
    parent.start(Program::StdinPipe | Program::StdoutPipe | Program::StderrNull);
    const vek::proc::ExitStatus status = waited(parent);
    EXPECT_TRUE(status.killed);
    EXPECT_EQ(status.code, 37125u);
    // The child that replaces the parent has inherited its streams.
    EXPECT_EQ(parent.write("text", 4), 4u);
    std::string text;
    EXPECT_EQ(parent.readOutput(text, 10), 4u);
    EXPECT_EQ(text, "text");
    parent.closeStdin();
    EXPECT_EQ(parent.readOutput(text, 10), 0u);
}

TEST_F(ParentTest, ReplacementThatCannotBeStartedLeavesTheProcess) {
    prepareParent({"replace", "C:\\no\\such\\program.exe"});
    std::string errors;
    EXPECT_FALSE(parent.exchange(nullptr, nullptr, &errors));
    EXPECT_EQ(parent.getStatus().code, 99u);
    EXPECT_NE(errors, "");
}

TEST_F(ParentTest, ExitWithoutTheEndOfThePlatformObjectWaitsForNoChild) {
    const NamedEvent end;
    prepareParent({"exit", end.name, "23", childProgram()});
    // With the null device as its streams the child doesn't keep this test's pipes open.
    EXPECT_FALSE(parent.exchange(nullptr, nullptr, nullptr));
    EXPECT_EQ(parent.getStatus().code, 23u);
}

TEST_F(ParentTest, BreakawayStartsTheChildOutsideTheJob) {
    prepareParent({"jobs", childProgram()});
    std::string output;
    EXPECT_TRUE(parent.exchange(nullptr, &output, nullptr));
    EXPECT_EQ(output, "10");
}

}  // namespace
