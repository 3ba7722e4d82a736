// The helper's own log, which a logging.conf beside it switches on.
#include <regex>

#include "tests/e2e/procedure_waits.h"
#include "tests/support/files.h"
#include "tests/support/helper_fixture.h"

namespace {

using support::Outcome;

class HelperLog : public support::HelperFixture {
  protected:
    void configure(const std::string& text) const {
        support::writeFile(helperDirectory + "\\logging.conf", text);
    }

    // The lines of `name` beside the helper.
    std::vector<std::string> linesOf(const std::string& name) const {
        std::vector<std::string> lines;
        std::string line;
        for (const char byte : support::readFile(helperDirectory + "\\" + name)) {
            if (byte == '\n') {
                lines.push_back(line);
                line.clear();
            } else if (byte != '\r') {
                line += byte;
            }
        }
        EXPECT_EQ(line, "") << "the last line has no end";
        return lines;
    }
};

const std::vector<std::string> updateSteps = {"start tolmarhlp",   "stopping tolmar",
                                              "copy backup files", "copy tolmar.exe",
                                              "start tolmar",      "tolmar is running -> ok"};

TEST_F(HelperLog, TellsAGoodUpdateInTheDefaultLayout) {
    configure(
        "defaults = { default_level = \"DEBUG\"; sink = { file = { enabled = true;"
        " path = \"{exedir}\\\\{instancename}.log\"; }; }; };");
    runService();
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(outcome.errorText, "");
    const std::vector<std::string> lines = linesOf("tolmarhlp.log");
    ASSERT_EQ(lines.size(), updateSteps.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::regex layout("PID=\\d+ \\| TID=\\d+ \\| .*\\[DEBUG\\] TOLMAR_HELPER: " +
                                updateSteps[i]);
        EXPECT_TRUE(std::regex_match(lines[i], layout)) << lines[i];
    }
}

TEST_F(HelperLog, TellsAGoodUpdateInACustomFormat) {
    configure(
        "processes = { tolmarhlp = { loggers = { TOLMAR_HELPER = \"DEBUG\"; }; sink = {"
        " file = { enabled = true; path = \"{exedir}\\\\{base}.log\";"
        " format = \"{level}|{category}|{msg}\"; }; }; }; };");
    runService();
    EXPECT_EQ(runHelper(installedDirectory).exitCode, 0u);
    std::vector<std::string> expected;
    for (const std::string& step : updateSteps) {
        expected.push_back("DEBUG|TOLMAR_HELPER|" + step);
    }
    EXPECT_EQ(linesOf("tolmarhlp.log"), expected);
}

TEST_F(HelperLog, IsEmptyAtTheDefaultLevel) {
    configure(
        "defaults = { sink = { file = { enabled = true;"
        " path = \"{exedir}\\\\{base}.log\"; }; }; };");
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(outcome.errorText, "");
    EXPECT_EQ(linesOf("tolmarhlp.log"), std::vector<std::string>{});
}

TEST_F(HelperLog, OfAnUpdateOfAMissingServiceEndsWithTheFirstStep) {
    configure(
        "defaults = { default_level = \"TRACE\"; sink = { file = { enabled = true;"
        " path = \"{exedir}\\\\{base}.log\"; format = \"{msg}\"; }; }; };");
    EXPECT_EQ(runHelper(installedDirectory).exitCode, 0u);
    EXPECT_EQ(linesOf("tolmarhlp.log"),
              (std::vector<std::string>{"start tolmarhlp", "stopping tolmar"}));
}

TEST_F(HelperLog, OfTheGuiModeHasItsOwnGroup) {
    configure(
        "processes = { tolmarhlp = { default_level = \"DEBUG\"; }; tolmarhlp-gui = {"
        " sink = { file = { enabled = true; path = \"{exedir}\\\\{instancename}.log\"; };"
        " }; }; };");
    EXPECT_EQ(runHelper("-restartgui " + installedDirectory).exitCode, 0u);
    EXPECT_TRUE(support::exists(helperDirectory + "\\tolmarhlp-gui.log"));
    EXPECT_EQ(runHelper(installedDirectory).exitCode, 0u);
    EXPECT_FALSE(support::exists(helperDirectory + "\\tolmarhlp.log"));
}

TEST_F(HelperLog, FileThatCannotBeParsedIsToldAndTheHelperDoesItsWork) {
    configure("defaults = {");
    runService();
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(outcome.errorText, "Couldn't parse libconfig configuration file '" + helperDirectory +
                                     "\\logging.conf' at line 1: 'syntax error'.\r\n");
    EXPECT_EQ(endState().running, 2);
}

TEST_F(HelperLog, FileThatCannotBeOpenedEndsTheHelperWithZero) {
    support::makeDirectory(helperDirectory + "\\logging.conf");
    runService();
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(outcome.errorText, "FileIOException");
    EXPECT_EQ(endState().running, 1);
    EXPECT_EQ(endState().installed, 1);
}

TEST_F(HelperLog, BadDefaultLevelEndsTheHelperWithZero) {
    configure("defaults = { default_level = \"DEFAULT\"; };");
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(outcome.errorText, "Usage error: log manager: bad default level value");
}

}  // namespace
