#include "tests/tools/log_application/support/burst.h"

#include <vector>

#include "tests/tools/log_application/support/tool_test.h"
#include "vek/base/text.h"

namespace log_application_test {

void expectNoneLostInAFile(int count, int size) {
    ServiceProcess burst("burst " + std::to_string(count) + " " + std::to_string(size), "burst", "",
                         untilFollowed);
    ToolRun run("tail --output json " + burst.connect());
    EXPECT_EQ(run.wait(ToolRun::burstLimitMs), static_cast<DWORD>(exitLost));
    EXPECT_TRUE(holds(run.errors(), " has ended\n")) << run.errors();
    EXPECT_FALSE(holds(run.errors(), "dropped")) << run.errors();
    std::vector<std::string> lines;
    vek::split(run.output(), '\n', lines, false, false);
    const std::string end = size == 0 ? "\"" : " ";
    std::size_t next = 0;
    for (const std::string& line : lines) {
        next += holds(line, "\"message\":\"message " + std::to_string(next) + end) ? 1 : 0;
    }
    EXPECT_EQ(next, static_cast<std::size_t>(count));
    EXPECT_EQ(lines.size(), next);
}

}  // namespace log_application_test
