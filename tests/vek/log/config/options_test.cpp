// The options of the command line, each on the command line of a fresh process.
#include "tests/vek/log/config/config_fixture.h"

namespace {

using namespace vek::test;

class ConfiguratorOptions : public ConfigTest {
  protected:
    // What a program prints with nothing in its file, and with `options`.
    std::string outputOf(const Words& options,
                         const Words& steps = {"configure=p", "report"}) const {
        return goodOutput(runWith("", steps, options));
    }
};

constexpr char nothing[] = "instance p\ndefault WARN\n";

TEST_F(ConfiguratorOptions, WithoutAnyNothingIsSet) {
    EXPECT_EQ(outputOf({}), nothing);
}

TEST_F(ConfiguratorOptions, LogMakesTheStdoutSink) {
    EXPECT_EQ(outputOf({"--log"}), std::string(nothing) + "stdout enabled max=INVALID format=0\n");
}

TEST_F(ConfiguratorOptions, LogWritesLinesWithoutIdsAndTime) {
    EXPECT_EQ(outputOf({"--log"}, {"configure=p", "log=WARN:cat:text", "log=INFO:cat:not passed"}),
              "[ WARN] cat: text\n");
}

TEST_F(ConfiguratorOptions, LogTidsLogTimeAndVerboseLogSetTheFlags) {
    const std::string start = std::string(nothing) + "stdout enabled";
    EXPECT_EQ(outputOf({"--log", "--log-tids"}), start + " tids max=INVALID format=0\n");
    EXPECT_EQ(outputOf({"--log", "--log-time"}), start + " time max=INVALID format=0\n");
    EXPECT_EQ(outputOf({"--log-time", "--log", "--log-tids"}),
              start + " tids time max=INVALID format=0\n");
}

TEST_F(ConfiguratorOptions, VerboseLogImpliesBothFlagsAndTellsTheFile) {
    EXPECT_EQ(outputOf({"--log", "--verbose-log"}),
              "Using veklog config file '" + path("logging.conf") + "'\n" + nothing +
                  "stdout enabled tids time max=INVALID format=0\n");
}

TEST_F(ConfiguratorOptions, FlagsAloneMakeNoSink) {
    EXPECT_EQ(outputOf({"--log-tids", "--log-time"}), nothing);
    EXPECT_EQ(outputOf({"--verbose-log"}),
              "Using veklog config file '" + path("logging.conf") + "'\n" + nothing);
}

TEST_F(ConfiguratorOptions, VerboseLogWithoutAFileTellsNothing) {
    EXPECT_EQ(
        support::runProgram(CONFIGURED_PROGRAM, {"configure=p", "report", "--", "--verbose-log"}),
        (ProgramOutput{0, nothing, ""}));
}

TEST_F(ConfiguratorOptions, LogLevelIsTheDefaultLevel) {
    for (const std::string level : {"OFF", "ERR", "WARN", "INFO", "DEBUG", "TRACE"}) {
        EXPECT_EQ(outputOf({"--log-level", level}, {"configure", "level=x"}), "x " + level + "\n");
    }
}

TEST_F(ConfiguratorOptions, LogLevelIsOnlyInForceBehindConfigure) {
    EXPECT_EQ(outputOf({"--log-level", "TRACE"}, {"level=x", "configure", "level=x"}),
              "x WARN\nx TRACE\n");
}

TEST_F(ConfiguratorOptions, LogLevelTakesUpperCaseOnly) {
    for (const std::string level : {"info", "INVALID", " INFO", ""}) {
        const ProgramOutput run = runWith("", {"configure"}, {"--log-level", level});
        EXPECT_NE(run.exitCode, 0u) << level;
        EXPECT_NE(run.error.find("Argument: (--log-level)"), std::string::npos) << run.error;
        EXPECT_NE(run.error.find("OFF|ERR|WARN|INFO|DEBUG|TRACE"), std::string::npos) << run.error;
    }
}

TEST_F(ConfiguratorOptions, LogLevelDefaultLeavesConfigure) {
    EXPECT_EQ(runWith("", {"configure"}, {"--log-level", "DEFAULT"}),
              (ProgramOutput{
                  9, "vek::UsageError: Usage error: log manager: bad default level value\n", ""}));
}

TEST_F(ConfiguratorOptions, CategorySetsTheLevelOfALogger) {
    EXPECT_EQ(outputOf({"--category", "a=INFO", "--category", "b.c= trace "},
                       {"level=a", "configure", "level=a", "level=b.c", "level=d"}),
              "a WARN\na INFO own\nb.c TRACE own\nd WARN\n");
}

TEST_F(ConfiguratorOptions, OfTwoCategoriesForOneNameTheLastOneStands) {
    EXPECT_EQ(outputOf({"--category", "a=INFO", "--category", "a=ERR"}, {"configure", "level=a"}),
              "a ERR own\n");
}

TEST_F(ConfiguratorOptions, CategoryMayHaveAnEmptyName) {
    EXPECT_EQ(outputOf({"--category", "=INFO"}, {"configure", "level="}), " INFO own\n");
}

TEST_F(ConfiguratorOptions, CategoryDefaultIsCopiedAsItStands) {
    EXPECT_EQ(outputOf({"--category", "a=DEFAULT"}, {"configure", "level=a"}), "a DEFAULT own\n");
}

TEST_F(ConfiguratorOptions, CategoryWithoutSeparatorIsReportedAndSkipped) {
    EXPECT_EQ(
        runWith("", {"configure", "level=a"}, {"--category", "aINFO", "--category", "a=ERR"}),
        (ProgramOutput{0, "a ERR own\n", "Missing separator '=' in logger setting 'aINFO'\n"}));
}

TEST_F(ConfiguratorOptions, CategoryWithAnUnknownLevelIsReportedAndSkipped) {
    EXPECT_EQ(runWith("", {"configure", "level=a", "level=b"},
                      {"--category", "a=ERR", "--category", "a=b=INFO", "--category", "b=loud"}),
              (ProgramOutput{0, "a ERR own\nb WARN\n",
                             "Skipping logger setting 'a': given level 'b=INFO' is unrecognized\n"
                             "Skipping logger setting 'b': given level 'loud' is unrecognized\n"}));
}

TEST_F(ConfiguratorOptions, LogcfgNamesTheFile) {
    writeFile("other.conf", "defaults = { default_level = \"INFO\"; };");
    EXPECT_EQ(support::runProgram(CONFIGURED_PROGRAM,
                                  {"configure=p", "report", "--", "--logcfg", path("other.conf")}),
              (ProgramOutput{0, "instance p\ndefault INFO\n", ""}));
}

TEST_F(ConfiguratorOptions, LogcfgMayBeRelative) {
    writeFile("other.conf", "defaults = { default_level = \"INFO\"; };");
    EXPECT_EQ(
        support::runProgram(CONFIGURED_PROGRAM,
                            {"configure=p", "report", "--", "--logcfg", "other.conf"}, {}, path()),
        (ProgramOutput{0, "instance p\ndefault INFO\n", ""}));
}

TEST_F(ConfiguratorOptions, LogcfgThatDoesNotExistLeavesConfigure) {
    EXPECT_EQ(run({"configure"}),
              (ProgramOutput{9, "libconfig::FileIOException: FileIOException\n", ""}));
}

TEST_F(ConfiguratorOptions, EmptyLogcfgMeansNoFile) {
    EXPECT_EQ(
        support::runProgram(CONFIGURED_PROGRAM, {"configure=p", "report", "--", "--logcfg", ""}),
        (ProgramOutput{0, nothing, ""}));
}

// Deliberately in another order than they are made in.
TEST_F(ConfiguratorOptions, HelpShowsThemWithTheirTextsInTheOrderOfTheParser) {
    const ProgramOutput run = support::runProgram(CONFIGURED_PROGRAM, {"--", "--help"});
    EXPECT_EQ(run.exitCode, 0u);
    std::string text;
    for (const char byte : run.output) {
        // The parser breaks lines at blanks.
        if ((byte != ' ' && byte != '\n') || !text.ends_with(' ')) {
            text += byte == '\n' ? ' ' : byte;
        }
    }
    const std::string where = "Where: ";
    const std::size_t start = text.find(where) + where.size();
    EXPECT_EQ(
        text.substr(start, text.find(" --, ") - start),
        "--verbose-log implies --log-time and --log-tids. "
        "--log-time log messages output due to --log will contain the time of message generation. "
        "--log-tids log messages output due to --log will contain the thread ID of the thread that "
        "generated the message. "
        "--log log messages will be output to stdout. "
        "--logcfg <file system path> An individual path to a log configuration file. By default a "
        "file named 'logging.conf' is looked for. "
        "--category <CATEGORY=level> (accepted multiple times) One or more Category level settings "
        "for veklog. "
        "--wait-log-application Causes the process initialization to wait until the 'log' program "
        "connected to the veklog facility of the program. This is useful for being able to get "
        "messages from early startup. "
        "--log-level <OFF|ERR|WARN|INFO|DEBUG|TRACE|DEFAULT> The default level to apply for "
        "loggers.");
}

TEST_F(ConfiguratorOptions, HaveNoShortForms) {
    EXPECT_NE(runWith("", {"configure"}, {"-l"}).exitCode, 0u);
    EXPECT_NE(runWith("", {"configure"}, {"-w"}).exitCode, 0u);
}

}  // namespace
