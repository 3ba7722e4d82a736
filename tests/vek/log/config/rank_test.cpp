// Which source wins, pair by pair, for every setting that two sources can set.
#include "tests/vek/log/config/config_fixture.h"

namespace {

using namespace vek::test;

class ConfigRank : public ConfigTest {
  protected:
    // One setting as each source can give it; a source that can't has nothing. What `steps` print
    // tells which one was taken.
    struct Sources {
        Environment environment;
        std::string defaults;
        std::string process;
        Words options;
    };

    std::string outputOf(const Sources& sources, const Words& steps) const {
        return goodOutput(runWith("defaults = { " + sources.defaults + " }; processes = { p = { " +
                                      sources.process + " }; };",
                                  steps, sources.options, sources.environment));
    }
};

TEST_F(ConfigRank, OfTheDefaultLevel) {
    const Environment environment = {{"VEKLOG_DEFAULT_LEVEL", "ERR"}};
    const std::string defaults = "default_level = \"INFO\";";
    const std::string process = "default_level = \"DEBUG\";";
    const Words options = {"--log-level", "TRACE"};
    const Words steps = {"configure=p", "level=x"};
    EXPECT_EQ(outputOf({}, steps), "x WARN\n");
    EXPECT_EQ(outputOf({environment, "", "", {}}, steps), "x ERR\n");
    EXPECT_EQ(outputOf({environment, defaults, "", {}}, steps), "x INFO\n");
    EXPECT_EQ(outputOf({environment, "", process, {}}, steps), "x DEBUG\n");
    EXPECT_EQ(outputOf({{}, defaults, process, {}}, steps), "x DEBUG\n");
    EXPECT_EQ(outputOf({environment, "", "", options}, steps), "x TRACE\n");
    EXPECT_EQ(outputOf({{}, defaults, "", options}, steps), "x TRACE\n");
    EXPECT_EQ(outputOf({{}, "", process, options}, steps), "x TRACE\n");
    EXPECT_EQ(outputOf({environment, defaults, process, options}, steps), "x TRACE\n");
}

TEST_F(ConfigRank, OfTheDefaultLevelUnderItsSecondName) {
    const Words steps = {"configure=p", "level=x"};
    EXPECT_EQ(
        outputOf({{{"VEKCRIME_DEFAULT_SCOPE", "ERR"}}, "default_level = \"INFO\";", "", {}}, steps),
        "x INFO\n");
    // The group counts for more than the name.
    EXPECT_EQ(outputOf({{}, "default_scope = \"INFO\";", "default_level = \"ERR\";", {}}, steps),
              "x ERR\n");
}

TEST_F(ConfigRank, OfTheLevelOfALogger) {
    const Environment environment = {{"VEKLOG_CATEGORY_a", "ERR"}};
    const std::string defaults = "loggers = { a = \"INFO\"; };";
    const std::string process = "loggers = { a = \"DEBUG\"; };";
    const Words options = {"--category", "a=TRACE"};
    const Words steps = {"configure=p", "level=a"};
    EXPECT_EQ(outputOf({}, steps), "a WARN\n");
    EXPECT_EQ(outputOf({environment, "", "", {}}, steps), "a ERR own\n");
    EXPECT_EQ(outputOf({environment, defaults, "", {}}, steps), "a INFO own\n");
    EXPECT_EQ(outputOf({environment, "", process, {}}, steps), "a DEBUG own\n");
    EXPECT_EQ(outputOf({{}, defaults, process, {}}, steps), "a DEBUG own\n");
    EXPECT_EQ(outputOf({environment, "", "", options}, steps), "a TRACE own\n");
    EXPECT_EQ(outputOf({{}, defaults, "", options}, steps), "a TRACE own\n");
    EXPECT_EQ(outputOf({{}, "", process, options}, steps), "a TRACE own\n");
    EXPECT_EQ(outputOf({environment, defaults, process, options}, steps), "a TRACE own\n");
}

TEST_F(ConfigRank, OfLoggersUnderTheirSecondNames) {
    const Words steps = {"configure=p", "level=a"};
    EXPECT_EQ(
        outputOf({{{"VEKCRIME_AGENT_a", "ERR"}}, "agents = { a = \"INFO\"; };", "", {}}, steps),
        "a INFO own\n");
    EXPECT_EQ(
        outputOf({{}, "loggers = { a = \"INFO\"; };", "agents = { a = \"ERR\"; };", {}}, steps),
        "a ERR own\n");
}

TEST_F(ConfigRank, LoggersOfAllSourcesAddUp) {
    EXPECT_EQ(outputOf({{{"VEKLOG_CATEGORY_a", "ERR"}},
                        "loggers = { b = \"INFO\"; };",
                        "agents = { c = \"DEBUG\"; };",
                        {"--category", "d=TRACE"}},
                       {"configure=p", "level=a", "level=b", "level=c", "level=d"}),
              "a ERR own\nb INFO own\nc DEBUG own\nd TRACE own\n");
}

TEST_F(ConfigRank, OfTheSettingsOfAConsoleSink) {
    const Words steps = {"configure=p", "report"};
    const std::string start = "instance p\ndefault WARN\n";
    const auto sink = [](const std::string& name, const std::string& settings) {
        return "sink = { " + name + " = { " + settings + " }; };";
    };
    for (const std::string name : {"stdout", "debugger"}) {
        for (const std::string flag : {"print_time", "print_tids", "print_pids"}) {
            const std::string shown = " " + flag.substr(6);
            EXPECT_EQ(outputOf({{},
                                sink(name, "enabled = true; " + flag + " = true;"),
                                sink(name, flag + " = false;"),
                                {}},
                               steps),
                      start + name + " enabled max=INVALID format=0\n");
            EXPECT_EQ(outputOf({{},
                                sink(name, "enabled = true; " + flag + " = false;"),
                                sink(name, flag + " = true;"),
                                {}},
                               steps),
                      start + name + " enabled" + shown + " max=INVALID format=0\n");
        }
        EXPECT_EQ(outputOf({{}, sink(name, "enabled = true;"), sink(name, "enabled = false;"), {}},
                           steps),
                  start);
        EXPECT_EQ(outputOf({{},
                            sink(name, "enabled = true; max_level = \"ERR\"; format = \"{msg}\";"),
                            sink(name, "max_level = \"INFO\"; format = \"x\";"),
                            {}},
                           steps),
                  start + name + " enabled max=INFO format=1\n");
        // What the second leaves out stays.
        EXPECT_EQ(outputOf({{},
                            sink(name, "enabled = true; print_time = true; max_level = \"ERR\";"),
                            sink(name, ""),
                            {}},
                           steps),
                  start + name + " enabled time max=ERR format=0\n");
    }
}

TEST_F(ConfigRank, OptionsWinOverTheFileInWhatTheyTurnOn) {
    const std::string off =
        "sink = { stdout = { enabled = false; print_tids = false;"
        " print_time = false; max_level = \"ERR\"; }; };";
    const std::string start = "instance p\ndefault WARN\n";
    const Words steps = {"configure=p", "report"};
    for (const bool inProcess : {false, true}) {
        const auto shown = [&](const Words& options) {
            return outputOf({{}, inProcess ? "" : off, inProcess ? off : "", options}, steps);
        };
        EXPECT_EQ(shown({}), start);
        EXPECT_EQ(shown({"--log"}), start + "stdout enabled max=ERR format=0\n");
        EXPECT_EQ(shown({"--log", "--log-tids"}), start + "stdout enabled tids max=ERR format=0\n");
        EXPECT_EQ(shown({"--log", "--log-time"}), start + "stdout enabled time max=ERR format=0\n");
        EXPECT_EQ(shown({"--log", "--verbose-log"}),
                  "Using veklog config file '" + path("logging.conf") + "'\n" + start +
                      "stdout enabled tids time max=ERR format=0\n");
    }
}

TEST_F(ConfigRank, OptionsThatAreNotSetTurnNothingOff) {
    EXPECT_EQ(outputOf({{},
                        "sink = { stdout = { enabled = true; print_tids = true; print_time = true;"
                        " }; };",
                        "",
                        {"--log-level", "INFO"}},
                       {"configure=p", "report"}),
              "instance p\ndefault INFO\nstdout enabled tids time max=INVALID format=0\n");
}

}  // namespace
