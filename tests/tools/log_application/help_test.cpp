// The help, and the documentation that quotes it.
#include "tests/support/files.h"
#include "tests/tools/log_application/support/tool_test.h"
#include "tools/log_application/command_table.h"

namespace {

using namespace log_application_test;

std::string documentation() {
    return replaced(support::readFile(DOCUMENTATION), "\r\n", "\n");
}

std::string readme() {
    return replaced(support::readFile(README_PATH), "\r\n", "\n");
}

TEST(Help, HasAnExampleForEachCommandAndTheExitCodes) {
    const ToolResult result = runTool("--help");
    EXPECT_EQ(result.code, static_cast<DWORD>(exitDone));
    EXPECT_EQ(result.errors, "");
    for (const log_application::CommandRow& row : log_application::commandTable) {
        EXPECT_TRUE(holds(result.output, "\n  log_application " + std::string(row.name) + " ") ||
                    holds(result.output, "\n  log_application " + std::string(row.name) + "\n"));
    }
    EXPECT_TRUE(holds(result.output, "\n  3  "));
}

TEST(Help, DocumentationQuotesItWordForWord) {
    EXPECT_TRUE(holds(documentation(), "```\n" + runTool("--help").output + "```\n"));
    for (const log_application::CommandRow& row : log_application::commandTable) {
        const std::string help = runTool(std::string(row.name) + " --help").output;
        EXPECT_FALSE(help.empty());
        EXPECT_TRUE(holds(documentation(), "```\n" + help + "```\n")) << help;
    }
}

TEST(Help, TablesOfTheDocumentationHaveEachCommandWithItsSummary) {
    for (const log_application::CommandRow& command : log_application::commandTable) {
        const std::string row =
            "| `" + std::string(command.name) + "` | " + std::string(command.summary) + " |\n";
        EXPECT_TRUE(holds(documentation(), row)) << row;
        EXPECT_TRUE(holds(readme(), row)) << row;
    }
}

}  // namespace
