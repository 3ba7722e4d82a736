#include <array>

#include "tests/support/open_handles.h"
#include "tests/vek/proc/proc_test.h"

namespace {

using vek::proc::Child;
using vek::proc::Program;

// Compares the number of open handles before and after many starts.
class ChildLoad : public vek::test::ProcTest {
  protected:
    ChildLoad() {
        Child first;
        prepare(first, {"exit", "0"});
        first.start();
        waited(first);
        before = support::openHandles().size();
    }

    std::size_t before = 0;
};

// Together the parts start a thousand children each way; CTest can run the parts in parallel.
class ManyChildren : public ChildLoad, public testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Part, ManyChildren, testing::Range(0, 4));

TEST_P(ManyChildren, OneAfterAnotherLeaveNoHandle) {
    const int first = GetParam() * 250;
    Child child;
    for (int i = first; i < first + 250; ++i) {
        prepare(child, {"exit", std::to_string(i)});
        child.start();
        ASSERT_EQ(waited(child).code, static_cast<std::uint32_t>(i));
    }
    EXPECT_EQ(support::openHandles().size(), before);
}

TEST_P(ManyChildren, SixtyAtATimeLeaveNoHandle) {
    std::array<Child, 60> children;
    std::uint32_t next = static_cast<std::uint32_t>(GetParam()) * 300;
    // 17 rounds in all.
    const int rounds = GetParam() == 0 ? 5 : 4;
    for (int round = 0; round < rounds; ++round) {
        std::uint32_t code = next;
        for (Child& child : children) {
            prepare(child, {"exit", std::to_string(next++)});
            child.start();
        }
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
