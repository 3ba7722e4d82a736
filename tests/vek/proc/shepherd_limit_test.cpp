#include <array>

#include "tests/support/open_handles.h"
#include "tests/vek/proc/proc_test.h"
#include "vek/proc/shepherd.h"

namespace {

using vek::RuntimeError;
using vek::UsageError;
using vek::proc::Child;
using vek::proc::Shepherd;
using vek::test::NamedEvent;

constexpr std::size_t most = Shepherd::maxChildren;

class ShepherdLimit : public vek::test::ProcTest {
  protected:
    static void start(Child& child, const NamedEvent& event, std::size_t code) {
        prepare(child, {"wait", event.name, std::to_string(code)});
        child.start();
    }

    // Kills a child that isn't watched.
    static void remove(Child& child) {
        Child::kill(child.getProcess().dwProcessId);
        EXPECT_TRUE(hasEnded(child));
        CloseHandle(child.getProcess().hThread);
        CloseHandle(child.getProcess().hProcess);
    }

    NamedEvent end;
    NamedEvent endOfLast;
    std::array<Child, most> children;
};

TEST_F(ShepherdLimit, SixtyThreeChildrenAreWatchedAndTheNextIsRefusedWhileItRuns) {
    EXPECT_EQ(most, 63u);
    for (std::size_t i = 0; i + 1 < most; ++i) {
        start(children[i], end, i);
    }
    start(children[most - 1], endOfLast, most - 1);

    Child refused;
    const std::string message = "Maximum number of child processes reached";
    EXPECT_EQ(thrown<RuntimeError>([&] { start(refused, end, 100); }), message);
    EXPECT_NE(refused.getProcess().dwProcessId, 0u);
    EXPECT_FALSE(hasEnded(refused, 50));
    remove(refused);

    // A refused program has closed its pipes; its process can still be killed and closed.
    vek::proc::Program program;
    prepare(program, {"wait", end.name, "0"});
    const std::size_t before = support::openHandles().size();
    EXPECT_EQ(thrown<RuntimeError>([&] { program.start(7); }), message);
    const DWORD refusedId = program.getProcess().dwProcessId;
    EXPECT_NE(refusedId, 0u);
    // The program counts as not started.
    EXPECT_EQ(thrown<UsageError>([&] { program.finish(); }),
              "Usage error: tried to wait on non-existant child");
    EXPECT_EQ(thrown<RuntimeError>([&] { program.start(7); }), message);
    EXPECT_NE(program.getProcess().dwProcessId, refusedId);
    Child::kill(refusedId);
    EXPECT_EQ(thrown<RuntimeError>([&] { waited(program); }), "Nobody watches this child");
    EXPECT_EQ(program.getProcess().dwProcessId, 0u);
    EXPECT_EQ(thrown<RuntimeError>([&] { program.start(7); }), message);
    remove(program);
    EXPECT_EQ(thrown<RuntimeError>([] {
                  Child::execute(vek::test::childProgram(), {"exit", "0"});
              }),
              message);
    EXPECT_EQ(support::openHandles().size(), before);

    // There is room again once one has ended.
    endOfLast.set();
    EXPECT_EQ(waited(children[most - 1]).code, most - 1);
    prepare(program, {"exit", "5"});
    EXPECT_FALSE(program.run(true));
    EXPECT_EQ(program.getStatus().code, 5u);
    start(children[most - 1], end, most - 1);

    // All end at once.
    end.set();
    for (std::size_t i = 0; i < most; ++i) {
        EXPECT_EQ(waited(children[i]).code, i);
    }
}

}  // namespace
