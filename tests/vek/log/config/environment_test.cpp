// The variables of the environment, each in a fresh process.
#include "tests/vek/log/config/config_fixture.h"

namespace {

using namespace vek::test;

class ConfiguratorEnvironment : public ConfigTest {
  protected:
    // What a program without a file prints, with `variables`.
    static std::string outputOf(const Environment& variables, const Words& steps) {
        return goodOutput(runBare(steps, variables));
    }
};

// As the compiler of this target spells them.
constexpr char defaultLevelSignature[] =
    "bool vek::log::Configurator::parseEnvDefaultLevel(const std::string&, const std::string&)";
constexpr char categorySignature[] =
    "bool vek::log::Configurator::parseEnvCategoryLevel(const std::string&, const std::string&)";
constexpr char problem[] = ": invalid level setting in environment in entry: ";

TEST_F(ConfiguratorEnvironment, WithoutVariablesTheDefaultLevelIsWarn) {
    EXPECT_EQ(outputOf({}, {"level=x"}), "x WARN\n");
}

TEST_F(ConfiguratorEnvironment, DefaultLevelIsInForceAheadOfConfigureAndBehindIt) {
    EXPECT_EQ(outputOf({{"VEKLOG_DEFAULT_LEVEL", "TRACE"}}, {"level=x", "configure", "level=x"}),
              "x TRACE\nx TRACE\n");
    EXPECT_EQ(outputOf({{"VEKCRIME_DEFAULT_SCOPE", "ERR"}}, {"level=x", "configure", "level=x"}),
              "x ERR\nx ERR\n");
}

TEST_F(ConfiguratorEnvironment, LevelTextsMayHaveBlanksAndAnyCase) {
    EXPECT_EQ(outputOf({{"VEKLOG_DEFAULT_LEVEL", " debug "}}, {"level=x"}), "x DEBUG\n");
    EXPECT_EQ(outputOf({{"VEKLOG_DEFAULT_LEVEL", "Debug"}}, {"level=x"}), "x DEBUG\n");
}

TEST_F(ConfiguratorEnvironment, OfTwoDefaultLevelsTheLaterOneInTheBlockStands) {
    EXPECT_EQ(outputOf({{"VEKCRIME_DEFAULT_SCOPE", "ERR"}, {"VEKLOG_DEFAULT_LEVEL", "INFO"}},
                       {"level=x"}),
              "x INFO\n");
    EXPECT_EQ(outputOf({{"VEKLOG_DEFAULT_LEVEL", "INFO"}, {"VEKCRIME_DEFAULT_SCOPE", "ERR"}},
                       {"level=x"}),
              "x ERR\n");
}

TEST_F(ConfiguratorEnvironment, BadDefaultLevelIsReportedAndChangesNothing) {
    for (const std::string value : {"INVALID", "loud", "", "INFO=1"}) {
        for (const std::string name : {"VEKLOG_DEFAULT_LEVEL", "VEKCRIME_DEFAULT_SCOPE"}) {
            EXPECT_EQ(runBare({"level=x"}, {{name, value}}),
                      (ProgramOutput{0, "x WARN\n",
                                     std::string(defaultLevelSignature) + problem + name + " = " +
                                         value + "\n"}));
        }
    }
}

TEST_F(ConfiguratorEnvironment, DefaultAsTheDefaultLevelLeavesTheConstructor) {
    for (const std::string name : {"VEKLOG_DEFAULT_LEVEL", "VEKCRIME_DEFAULT_SCOPE"}) {
        EXPECT_EQ(runBare({"level=x"}, {{name, "DEFAULT"}}),
                  (ProgramOutput{8,
                                 "vek::UsageError: Usage error: log manager: bad default level "
                                 "value\n",
                                 ""}));
    }
}

TEST_F(ConfiguratorEnvironment, GivesLoggersTheirLevelsUnderBothNames) {
    EXPECT_EQ(outputOf({{"VEKLOG_CATEGORY_a", "INFO"}, {"VEKCRIME_AGENT_b", " trace"}},
                       {"level=a", "level=b", "level=c"}),
              "a INFO own\nb TRACE own\nc WARN\n");
}

TEST_F(ConfiguratorEnvironment, OfTwoLevelsForOneLoggerTheLaterOneStands) {
    EXPECT_EQ(outputOf({{"VEKLOG_CATEGORY_a", "INFO"}, {"VEKCRIME_AGENT_a", "TRACE"}}, {"level=a"}),
              "a TRACE own\n");
    EXPECT_EQ(outputOf({{"VEKCRIME_AGENT_a", "TRACE"}, {"VEKLOG_CATEGORY_a", "INFO"}}, {"level=a"}),
              "a INFO own\n");
}

TEST_F(ConfiguratorEnvironment, LoggersNamesKeepTheirUnderscores) {
    EXPECT_EQ(outputOf({{"VEKLOG_CATEGORY_net_tcp", "INFO"}}, {"level=net_tcp", "level=net"}),
              "net_tcp INFO own\nnet WARN\n");
    EXPECT_EQ(outputOf({{"VEKLOG_CATEGORY_a_", "INFO"}}, {"level=a_", "level=a"}),
              "a_ INFO own\na WARN\n");
}

TEST_F(ConfiguratorEnvironment, DoubledUnderscoreEndsUpInTheLoggersName) {
    EXPECT_EQ(outputOf({{"VEKLOG_CATEGORY__a", "INFO"}}, {"level=_a", "level=a"}),
              "_a INFO own\na WARN\n");
    EXPECT_EQ(outputOf({{"VEKLOG__CATEGORY_a", "INFO"}}, {"level=_a", "level=a"}),
              "_a INFO own\na WARN\n");
    EXPECT_EQ(outputOf({{"_VEKLOG_CATEGORY_a", "INFO"}}, {"level=_a", "level=a"}),
              "_a INFO own\na WARN\n");
}

// They count as little as a doubled underscore does, and have the same effect on the logger's name.
TEST_F(ConfiguratorEnvironment, BlanksAroundThePiecesOfTheNameAreNotLookedAt) {
    EXPECT_EQ(outputOf({{"VEKLOG_ CATEGORY_a", "INFO"}}, {"level=_a", "level=a"}),
              "_a INFO own\na WARN\n");
    EXPECT_EQ(outputOf({{"VEKLOG_CATEGORY_ ", "INFO"}}, {"level= "}), "  WARN\n");
}

TEST_F(ConfiguratorEnvironment, OtherNamesDoNothing) {
    const Environment others = {{"VEKLOG_CATEGORY", "INFO"},     {"VEKLOG_CATEGORY_", "INFO"},
                                {"VEKLOG_AGENT_a", "INFO"},      {"VEKCRIME_CATEGORY_a", "INFO"},
                                {"VEKLOG_CATEGORIES_a", "INFO"}, {"XVEKLOG_CATEGORY_a", "INFO"},
                                {"VEKLOG_DEFAULT", "INFO"},      {"VEKLOG_DEFAULT_SCOPE", "INFO"},
                                {"VEKLOG_DEFAULT_LEVEL_", "x"},  {"VEKLOG_CATEGORY_x y", "ERR"}};
    EXPECT_EQ(outputOf(others, {"level=a", "level=", "level=CATEGORY", "level=x y"}),
              "a WARN\n WARN\nCATEGORY WARN\nx y ERR own\n");
}

TEST_F(ConfiguratorEnvironment, BadLevelOfALoggerIsReportedAndLeavesNoEntry) {
    EXPECT_EQ(
        runBare({"level=a_b"}, {{"VEKLOG_CATEGORY_a_b", "loud"}}),
        (ProgramOutput{0, "a_b WARN\n",
                       std::string(categorySignature) + problem + "VEKLOG_CATEGORY_a_b = loud\n"}));
    EXPECT_EQ(
        runBare({"level=a"}, {{"VEKLOG_CATEGORY_a", "INFO"}, {"VEKCRIME_AGENT_a", "INVALID"}}),
        (ProgramOutput{0, "a INFO own\n",
                       std::string(categorySignature) + problem + "VEKCRIME_AGENT_a = INVALID\n"}));
}

TEST_F(ConfiguratorEnvironment, DefaultAsALoggersLevelIsCopiedAsItStands) {
    EXPECT_EQ(outputOf({{"VEKLOG_CATEGORY_a", "DEFAULT"}}, {"level=a"}), "a DEFAULT own\n");
    // The manager translates it for loggers that exist.
    EXPECT_EQ(outputOf({{"VEKLOG_CATEGORY_a", "DEFAULT"}}, {"level=a", "configure", "level=a"}),
              "a DEFAULT own\na WARN\n");
}

TEST_F(ConfiguratorEnvironment, LaterVariablesCountBehindABadOne) {
    const ProgramOutput run =
        runBare({"level=x", "level=a"}, {{"VEKLOG_DEFAULT_LEVEL", "loud"},
                                         {"VEKLOG_CATEGORY_a", "loud"},
                                         {"VEKCRIME_AGENT_a", "INFO"},
                                         {"VEKCRIME_DEFAULT_SCOPE", "TRACE"}});
    EXPECT_EQ(run.output, "x TRACE\na INFO own\n");
}

}  // namespace
