// FollowTest's burst in full. A program of its own, which scripts/checks/bursts runs.
#include "tests/tools/log_application/support/burst.h"
#include "tests/tools/log_application/support/tool_test.h"

namespace {

using namespace log_application_test;

class LargeBurstTest : public ToolTest {};

TEST_F(LargeBurstTest, NoneOf100000MessagesIsLostInAFile) {
    expectNoneLostInAFile(100'000);
}

}  // namespace
