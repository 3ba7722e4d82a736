// The settings of logging.conf: its groups, and the levels in them.
#include "tests/vek/log/config/file_fixture.h"

namespace {

using namespace vek::test;

class ConfigFile : public ConfigFileTest {};

// --- the groups -----------------------------------------------------------------------------

TEST_F(ConfigFile, EmptyFileChangesNothing) {
    EXPECT_EQ(reportWith(""), unchanged);
    EXPECT_EQ(reportWith("# a comment\n"), unchanged);
}

TEST_F(ConfigFile, OtherSettingsOfTheRootAreIgnored) {
    EXPECT_EQ(reportWith("default_level = \"INFO\"; other = { default_level = \"INFO\"; };"),
              unchanged);
}

TEST_F(ConfigFile, GroupOfThisProcessCountsAndThoseOfOthersDoNot) {
    EXPECT_EQ(reportWith("processes = { q = { default_level = \"INFO\"; }; };"), unchanged);
    EXPECT_EQ(reportWith("processes = { P = { default_level = \"INFO\"; }; };"), unchanged);
    EXPECT_EQ(reportWith("processes = { p = { default_level = \"INFO\"; }; };"),
              "instance p\ndefault INFO\n");
    EXPECT_EQ(reportWith("processes = { };"), unchanged);
}

TEST_F(ConfigFile, NameOfTheProcessMayHaveAHyphen) {
    EXPECT_EQ(goodOutput(runWith("processes = { tolmarhlp-gui = { default_level = \"INFO\"; }; };",
                                 {"configure=tolmarhlp-gui", "report"})),
              "instance tolmarhlp-gui\ndefault INFO\n");
}

TEST_F(ConfigFile, GroupsThatAreNoneYieldNothing) {
    for (const std::string value : {"1", "\"text\"", "true", "(1)", "[1]", "1.5"}) {
        EXPECT_EQ(reportWith("defaults = " + value + "; processes = " + value + ";"), unchanged);
        EXPECT_EQ(reportWith("processes = { p = " + value + "; };"), unchanged);
    }
}

// --- levels -----------------------------------------------------------------------------------

TEST_F(ConfigFile, DefaultLevelHasTwoNamesAndTheScopeStands) {
    EXPECT_EQ(outputWith("default_level = \" info \";"), "instance p\ndefault INFO\n");
    EXPECT_EQ(outputWith("default_scope = \"Trace\";"), "instance p\ndefault TRACE\n");
    EXPECT_EQ(outputWith("default_scope = \"TRACE\"; default_level = \"INFO\";"),
              "instance p\ndefault TRACE\n");
}

TEST_F(ConfigFile, BadDefaultLevelsAreReportedUnderOneNameAndReadingGoesOn) {
    const ProgramOutput run = runWith(
        "defaults = { default_level = \"loud\"; default_scope = \"INVALID\";"
        " sink = { stdout = { enabled = true; }; }; };",
        {"configure=p", "report"});
    EXPECT_EQ(run, (ProgramOutput{0, unchanged + "stdout enabled max=INVALID format=0\n",
                                  "Invalid value for setting \"default_level\": \"loud\"\n"
                                  "Invalid value for setting \"default_level\": \"INVALID\"\n"}));
}

TEST_F(ConfigFile, BadScopeLeavesTheLevelAheadOfIt) {
    EXPECT_EQ(runWith("defaults = { default_level = \"INFO\"; default_scope = \"\"; };",
                      {"configure=p", "report"}),
              (ProgramOutput{0, "instance p\ndefault INFO\n",
                             "Invalid value for setting \"default_level\": \"\"\n"}));
}

TEST_F(ConfigFile, DefaultAsTheDefaultLevelLeavesConfigureWithoutAReport) {
    for (const std::string name : {"default_level", "default_scope"}) {
        EXPECT_EQ(
            runWith("defaults = { " + name + " = \"DEFAULT\"; };", {"configure=p", "report"}),
            (ProgramOutput{
                9, "vek::UsageError: Usage error: log manager: bad default level value\n", ""}));
    }
}

TEST_F(ConfigFile, LoggersGetTheirLevels) {
    EXPECT_EQ(outputWith("loggers = { a = \"INFO\"; b-c_d = \" trace\"; e = \"OFF\"; };",
                         {"level=a", "configure", "level=a", "level=b-c_d", "level=e", "level=x"}),
              "a WARN\na INFO own\nb-c_d TRACE own\ne OFF own\nx WARN\n");
}

TEST_F(ConfigFile, AgentsAreTheSameUnlessThereAreLoggers) {
    EXPECT_EQ(outputWith("agents = { a = \"INFO\"; };", {"configure", "level=a"}), "a INFO own\n");
    EXPECT_EQ(outputWith("agents = { a = \"INFO\"; b = \"INFO\"; }; loggers = { a = \"ERR\"; };",
                         {"configure", "level=a", "level=b"}),
              "a ERR own\nb WARN\n");
    EXPECT_EQ(outputWith("agents = { a = \"INFO\"; }; loggers = { };", {"configure", "level=a"}),
              "a WARN\n");
    EXPECT_EQ(outputWith("agents = { a = \"INFO\"; }; loggers = 1;", {"configure", "level=a"}),
              "a WARN\n");
}

TEST_F(ConfigFile, LoggerWithABadLevelEndsUpOff) {
    EXPECT_EQ(runWith("defaults = { loggers = { a = \"loud\"; b = \"INVALID\"; c = \"INFO\"; }; };",
                      {"configure", "level=a", "level=b", "level=c"}),
              (ProgramOutput{0, "a OFF own\nb OFF own\nc INFO own\n",
                             "Invalid value for setting \"a\": \"loud\"\n"
                             "Invalid value for setting \"b\": \"INVALID\"\n"}));
}

TEST_F(ConfigFile, LoggerWithABadLevelKeepsTheOneThatItHad) {
    EXPECT_EQ(runWith("defaults = { loggers = { a = \"INFO\"; }; };"
                      "processes = { p = { loggers = { a = \"loud\"; b = \"loud\"; }; }; };",
                      {"configure=p", "level=a", "level=b"}, {}, {{"VEKLOG_CATEGORY_b", "TRACE"}}),
              (ProgramOutput{0, "a INFO own\nb TRACE own\n",
                             "Invalid value for setting \"a\": \"loud\"\n"
                             "Invalid value for setting \"b\": \"loud\"\n"}));
}

TEST_F(ConfigFile, LoggerWithoutATextGetsTheTextReadLast) {
    // An earlier member's,
    EXPECT_EQ(outputWith("loggers = { a = \"INFO\"; b = 1; c = \"ERR\"; d = true; };",
                         {"configure", "level=a", "level=b", "level=c", "level=d"}),
              "a INFO own\nb INFO own\nc ERR own\nd ERR own\n");
    // also a bad one,
    EXPECT_EQ(runWith("defaults = { loggers = { a = \"loud\"; b = {}; }; };",
                      {"configure", "level=a", "level=b"}),
              (ProgramOutput{0, "a OFF own\nb OFF own\n",
                             "Invalid value for setting \"a\": \"loud\"\n"
                             "Invalid value for setting \"b\": \"loud\"\n"}));
    // that of the default level,
    EXPECT_EQ(
        outputWith("default_level = \"INFO\"; loggers = { b = 1; };", {"configure", "level=b"}),
        "b INFO own\n");
    EXPECT_EQ(
        outputWith("default_level = \"INFO\"; default_scope = \"ERR\"; loggers = { b = []; };",
                   {"configure", "level=b"}),
        "b ERR own\n");
    // but not an address or a format, read by others;
    EXPECT_EQ(outputWith("default_level = \"INFO\"; listen_addr = \"\";"
                         "sink = { stdout = { max_level = \"TRACE\"; }; }; agents = { b = 1.5; };",
                         {"configure", "level=b"}),
              "b INFO own\n");
    // nor that of another group: then it is empty.
    EXPECT_EQ(runWith("defaults = { default_level = \"INFO\"; };"
                      "processes = { p = { loggers = { b = 1; }; }; };",
                      {"configure=p", "level=b"}),
              (ProgramOutput{0, "b OFF own\n", "Invalid value for setting \"b\": \"\"\n"}));
}

TEST_F(ConfigFile, DefaultAsALoggersLevelIsCopiedAsItStands) {
    EXPECT_EQ(outputWith("loggers = { a = \"DEFAULT\"; };", {"configure", "level=a"}),
              "a DEFAULT own\n");
}

TEST_F(ConfigFile, LoggersOfAnotherTypeYieldNothing) {
    for (const std::string value : {"( \"INFO\" )", "[ \"INFO\" ]", "\"INFO\"", "1"}) {
        EXPECT_EQ(outputWith("loggers = " + value + ";"), unchanged);
        EXPECT_EQ(outputWith("agents = " + value + ";"), unchanged);
    }
}

}  // namespace
