#include <array>

#include "tests/support/open_handles.h"
#include "tests/vek/proc/proc_test.h"

namespace {

using vek::proc::Child;
using vek::proc::Program;

// Counts the handles around what it does many times.
class ChildLoad : public vek::test::ProcTest {
  protected:
    static constexpr int total = 1000;

    ChildLoad() {
        Child first;
        prepare(first, {"exit", "0"});
        first.start();
        waited(first);
        before = support::openHandles().size();
    }

    std::size_t before = 0;
};

TEST_F(ChildLoad, ThousandChildrenOneAfterAnotherLeaveNoHandle) {
    Child child;
    for (int i = 0; i < total; ++i) {
        prepare(child, {"exit", std::to_string(i)});
        child.start();
        ASSERT_EQ(waited(child).code, static_cast<std::uint32_t>(i));
    }
    EXPECT_EQ(support::openHandles().size(), before);
}

TEST_F(ChildLoad, ThousandChildrenSixtyAtATimeLeaveNoHandle) {
    std::array<Child, 60> children;
    for (std::uint32_t started = 0; started < total;) {
        const std::uint32_t first = started;
        for (Child& child : children) {
            prepare(child, {"exit", std::to_string(started++)});
            child.start();
        }
        std::uint32_t code = first;
        for (Child& child : children) {
            ASSERT_EQ(waited(child).code, code++);
        }
    }
    EXPECT_EQ(support::openHandles().size(), before);
}

TEST_F(ChildLoad, ProgramsWithPipesLeaveNoHandle) {
    Program program;
    prepare(program, {"copy"});
    for (int i = 0; i < 30; ++i) {
        const std::string input = std::to_string(i);
        std::string output;
        std::string errors;
        ASSERT_TRUE(program.exchange(&input, &output, &errors));
        ASSERT_EQ(output + errors, input + input);
    }
    EXPECT_EQ(support::openHandles().size(), before);
}

}  // namespace
