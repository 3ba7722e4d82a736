// The settings of logging.conf: what each does, and what is made of those of the wrong type.
#include "tests/vek/log/config_fixture.h"

namespace {

using namespace vek::test;

class ConfigFile : public ConfigTest {
  protected:
    // What `report` prints with `text` as the file, in process "p".
    std::string reportWith(const std::string& text) const {
        return goodOutput(runWith(text, {"configure=p", "report"}));
    }

    std::string sinksWith(const std::string& settings) const {
        std::string output = outputWith(settings);
        EXPECT_TRUE(output.starts_with("instance p\ndefault WARN\n")) << output;
        return output.substr(
            std::min(output.size(), std::string("instance p\ndefault WARN\n").size()));
    }
};

constexpr char unchanged[] = "instance p\ndefault WARN\n";

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
    EXPECT_EQ(run,
              (ProgramOutput{0, std::string(unchanged) + "stdout enabled max=INVALID format=0\n",
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

// --- sinks ------------------------------------------------------------------------------------

TEST_F(ConfigFile, SinkSettingsReachTheStdoutAndTheDebuggerSink) {
    const std::string all =
        "{ enabled = true; print_time = true; print_tids = true; print_pids = true;"
        " max_level = \"info\"; format = \"{level}: {msg}\"; };";
    const std::string shown = " enabled pids tids time max=INFO format=5\n";
    EXPECT_EQ(sinksWith("sink = { stdout = " + all + " debugger = " + all + " };"),
              "stdout" + shown + "debugger" + shown);
}

TEST_F(ConfigFile, EachSinkSettingCountsByItself) {
    const struct {
        std::string setting;
        std::string shown;
    } rows[] = {
        {"", " enabled max=INVALID format=0\n"},
        {"print_time = true;", " enabled time max=INVALID format=0\n"},
        {"print_tids = true;", " enabled tids max=INVALID format=0\n"},
        {"print_pids = true;", " enabled pids max=INVALID format=0\n"},
        {"max_level = \" Err \";", " enabled max=ERR format=0\n"},
        {"max_level = \"DEFAULT\";", " enabled max=DEFAULT format=0\n"},
        {"format = \"\";", " enabled max=INVALID format=1\n"},
        {"format = \"{msg}\";", " enabled max=INVALID format=3\n"},
    };
    for (const std::string sink : {"stdout", "debugger"}) {
        for (const auto& [setting, shown] : rows) {
            EXPECT_EQ(sinksWith("sink = { " + sink + " = { enabled = true; " + setting + " }; };"),
                      sink + shown);
        }
    }
}

TEST_F(ConfigFile, SinksAreOffUnlessEnabled) {
    EXPECT_EQ(sinksWith("sink = { stdout = { }; debugger = { }; syslog = { enabled = true; }; };"),
              "");
    EXPECT_EQ(sinksWith("sink = { stdout = { enabled = false; }; };"), "");
}

TEST_F(ConfigFile, SyslogIsReadWithoutEffectButItsErrorsCount) {
    EXPECT_EQ(sinksWith("sink = { syslog = { enabled = true; max_level = \"TRACE\"; }; };"), "");
    const ProgramOutput run =
        runWith("defaults = { sink = { syslog = { max_level = \"loud\"; }; }; };", {"configure"});
    EXPECT_EQ(run.error, "Usage error: Invalid LEVEL string \"loud\"\n");
}

TEST_F(ConfigFile, EvidenceOverridesSinkKeyByKey) {
    EXPECT_EQ(sinksWith("evidence = { stdout = { print_time = false; max_level = \"ERR\"; }; };"
                        "sink = { stdout = { enabled = true; print_time = true; print_tids = true;"
                        " max_level = \"INFO\"; }; };"),
              "stdout enabled tids max=ERR format=0\n");
    EXPECT_EQ(sinksWith("evidence = { debugger = { enabled = true; }; };"),
              "debugger enabled max=INVALID format=0\n");
}

TEST_F(ConfigFile, LaterFormatReplacesTheEarlierOne) {
    EXPECT_EQ(sinksWith("sink = { stdout = { enabled = true; format = \"{msg}{msg}\"; }; };"
                        "evidence = { stdout = { format = \"x\"; }; };"),
              "stdout enabled max=INVALID format=1\n");
}

TEST_F(ConfigFile, UnknownFormatKeywordIsReportedAndStaysAsText) {
    EXPECT_EQ(runWith("defaults = { sink = { stdout = { enabled = true; format = \"{no} {msg}\"; };"
                      " }; };",
                      {"configure", "log=WARN:a:text"}),
              (ProgramOutput{0, "{no} text\n",
                             "Unknown veklog message format keyword '{no}' encountered!\n"}));
}

// --- file sinks -------------------------------------------------------------------------------

TEST_F(ConfigFile, FileSinkTakesEverySetting) {
    EXPECT_EQ(sinksWith("sink = { file = { enabled = true; print_time = false; print_tids = false;"
                        " print_pids = false; max_level = \"INFO\"; format = \"{msg}\";"
                        " path = \"" +
                        escaped(path("a.log")) +
                        "\"; rotate = true; max_archives = 5;"
                        " compress_archives = false; rotate_size = \"10 mb\";"
                        " rotate_interval = \"1 days\"; }; };"),
              "file#0 enabled max=INFO format=3 path=" + path("a.log") +
                  " rotate archives=5 size=10240 interval=86400\n");
}

TEST_F(ConfigFile, FileSinkHasItsOwnDefaults) {
    EXPECT_EQ(sinksWith("sink = { file = { enabled = true; path = \"" + escaped(path("a.log")) +
                        "\"; }; };"),
              plainFileSink(0, path("a.log")));
}

TEST_F(ConfigFile, FileSinkWithoutEnabledHasNoFileAndWritesNothing) {
    const std::string settings =
        "sink = { file = { path = \"" + escaped(path("a.log")) + "\"; }; };";
    EXPECT_EQ(outputWith(settings, {"configure=p", "log=WARN:a:text", "report"}),
              std::string(unchanged) + "file#0 pids tids time max=INVALID format=0 path=" +
                  path("a.log") + " archives=3 size=5120 interval=604800 compress\n");
    EXPECT_FALSE(std::filesystem::exists(path("a.log")));
}

TEST_F(ConfigFile, SizesAndIntervalsAreCutDownToTheirUnits) {
    const struct {
        std::string setting;
        std::string shown;
    } rows[] = {
        {"rotate_size = \"1 kb\";", "size=1 interval=604800"},
        {"rotate_size = \"1023 b\";", "size=5120 interval=604800"},  // 0 means the default
        {"rotate_size = \"1 tb\";", "size=1073741824 interval=604800"},
        {"rotate_interval = \"500 ms\";", "size=5120 interval=604800"},
        {"rotate_interval = \"1999 ms\";", "size=5120 interval=1"},
        {"rotate_interval = \"1 mon\";", "size=5120 interval=2592000"},
        {"rotate_interval = \"1 y\";", "size=5120 interval=31104000"},
    };
    for (const auto& [setting, shown] : rows) {
        const std::string sinks =
            sinksWith("sink = { file = { path = \"x\"; " + setting + " }; };");
        EXPECT_NE(sinks.find(shown + " compress"), std::string::npos) << setting << sinks;
    }
}

TEST_F(ConfigFile, NegativeMaxArchivesIsAVeryLargeNumber) {
    EXPECT_NE(sinksWith("sink = { file = { path = \"x\"; max_archives = -1; }; };")
                  .find("archives=4294967295 "),
              std::string::npos);
}

TEST_F(ConfigFile, ListOfFileSinksMakesEachInTheOrderOfTheirPaths) {
    EXPECT_EQ(sinksWith("sink = { file = ( { path = \"" + escaped(path("b.log")) +
                        "\"; enabled = true; }, { path = \"" + escaped(path("a.log")) +
                        "\"; enabled = true; } ); };"),
              plainFileSink(0, path("a.log")) + plainFileSink(1, path("b.log")));
    EXPECT_EQ(sinksWith("sink = { file = ( ); };"), "");
}

TEST_F(ConfigFile, FileSinksOfSinkEvidenceAndBothGroupsAddUp) {
    const auto file = [this](const std::string& name) {
        return " = { file = { enabled = true; path = \"" + escaped(path(name)) + "\"; }; }; ";
    };
    EXPECT_EQ(
        reportWith("defaults = { sink" + file("a") + "evidence" + file("b") +
                   "}; processes = { p = { sink" + file("c") + "evidence" + file("d") + "}; };"),
        unchanged + plainFileSink(0, path("a")) + plainFileSink(1, path("b")) +
            plainFileSink(2, path("c")) + plainFileSink(3, path("d")));
}

TEST_F(ConfigFile, FileOfAnotherTypeIsReportedAndReadingGoesOn) {
    for (const std::string value : {"1", "\"x\"", "true", "1.5", "5L", "[ 1 ]", "[ ]"}) {
        EXPECT_EQ(runWith("defaults = { sink = { file = " + value +
                              "; }; loggers = { a = \"INFO\"; }; };",
                          {"configure=p", "report", "level=a"}),
                  (ProgramOutput{0, std::string(unchanged) + "a INFO own\n",
                                 "veklog config setting defaults.sink.file: Unexpected type. "
                                 "Expected group {} or a list of groups ({}, {})\n"}));
    }
}

TEST_F(ConfigFile, ElementOfAnotherTypeIsReportedAndTheOthersCount) {
    for (const std::string value : {"1", "\"x\"", "true", "1.5", "[ 1 ]", "( { } )"}) {
        EXPECT_EQ(runWith("processes = { p = { evidence = { file = ( " + value +
                              ", { path = \"x\"; } ); }; }; };",
                          {"configure=p", "report"}),
                  (ProgramOutput{0,
                                 std::string(unchanged) +
                                     "file#0 pids tids time max=INVALID format=0 path=x archives=3 "
                                     "size=5120 interval=604800 compress\n",
                                 "veklog config setting processes.p.evidence.file.[0]: Unexpected "
                                 "type. Expected group {}\n"}));
    }
}

TEST_F(ConfigFile, FileSinkWithoutPathIsReportedAndASecondOneAsADuplicateToo) {
    EXPECT_EQ(runWith("defaults = { sink = { file = { enabled = true; }; }; };",
                      {"configure=p", "report"}),
              (ProgramOutput{0, unchanged,
                             "veklog config setting defaults.sink.file: Missing path for logfile. "
                             "Ignoring this.\n"}));
    EXPECT_EQ(
        runWith("defaults = { sink = { file = ( { enabled = true; }, { path = \"\"; } ); }; };",
                {"configure=p", "report"}),
        (ProgramOutput{0, unchanged,
                       "veklog config setting defaults.sink.file.[0]: Missing path for "
                       "logfile. Ignoring this.\n"
                       "veklog config setting defaults.sink.file.[1]: Missing path for "
                       "logfile. Ignoring this.\n"
                       "veklog config setting defaults.sink.file.[1]: Duplicate configuration "
                       "for this logfile path. Overwriting settings.\n"}));
}

TEST_F(ConfigFile, OfTwoFileSinksForOneExpandedPathTheFirstStands) {
    EXPECT_EQ(
        runWith("defaults = { sink = { file = { path = \"p.log\"; max_archives = 7; }; }; };"
                "processes = { p = { sink = { file = { path = \"{instancename}.log\";"
                " max_archives = 9; }; }; }; };",
                {"configure=p", "report"}),
        (ProgramOutput{0,
                       std::string(unchanged) +
                           "file#0 pids tids time max=INVALID format=0 path=p.log archives=7 "
                           "size=5120 interval=604800 compress\n",
                       "veklog config setting processes.p.sink.file: Duplicate configuration for "
                       "this logfile path. Overwriting settings.\n"}));
}

TEST_F(ConfigFile, FileSinkThatCannotBeOpenedIsReportedAndKept) {
    const std::string file = path("missing\\a.log");
    EXPECT_EQ(runWith("defaults = { sink = { stdout = { enabled = true; }; file = { enabled = true;"
                      " path = \"" +
                          escaped(file) + "\"; }; }; };",
                      {"configure=p", "report", "log=WARN:a:text"}),
              (ProgramOutput{0,
                             std::string(unchanged) + "stdout enabled max=INVALID format=0\n" +
                                 plainFileSink(0, file) + "[ WARN] a: text\n",
                             "File sink at " + file + " couldn't be opened!\n"}));
}

// --- the wrong types --------------------------------------------------------------------------

// A value of each type.
const std::string values[] = {"1",     "1L",  "0x1F", "1.5", "true",
                              "\"x\"", "[1]", "(1)",  "{ }", "{ enabled = true; }"};

bool isText(const std::string& value) {
    return value.starts_with('"');
}

TEST_F(ConfigFile, LenientSettingsOfAnotherTypeAreAsIfTheyWereAbsent) {
    for (const std::string& value : values) {
        std::string settings;
        if (!isText(value)) {
            for (const std::string name :
                 {"default_level", "default_scope", "listen_addr", "discovery_addr"}) {
                settings += name + " = " + value + "; ";
            }
        }
        if (value != "true") {
            settings += "wait_log_application = " + value + "; ";
        }
        std::string sink;
        for (const std::string name : {"print_time", "print_tids", "print_pids", "rotate"}) {
            sink += value == "true" ? "" : name + " = " + value + "; ";
        }
        for (const std::string name : {"max_level", "format"}) {
            sink += isText(value) ? "" : name + " = " + value + "; ";
        }
        settings += "sink = { stdout = { enabled = true; " + sink +
                    " }; file = { enabled = true; " + "path = \"" + escaped(path("a.log")) +
                    "\"; " + sink + " }; };";
        EXPECT_EQ(outputWith(settings), unchanged +
                                            std::string("stdout enabled max=INVALID format=0\n") +
                                            plainFileSink(0, path("a.log")))
            << settings;
        if (value != "true") {
            EXPECT_EQ(sinksWith("sink = { stdout = { enabled = " + value + "; }; };"), "") << value;
        }
    }
}

TEST_F(ConfigFile, PathOfAnotherTypeIsAsIfItWereAbsent) {
    for (const std::string& value : values) {
        if (!isText(value)) {
            EXPECT_EQ(runWith("defaults = { sink = { file = { path = " + value + "; }; }; };",
                              {"configure=p", "report"}),
                      (ProgramOutput{0, unchanged,
                                     "veklog config setting defaults.sink.file: Missing path for "
                                     "logfile. Ignoring this.\n"}));
        }
    }
}

TEST_F(ConfigFile, SinkGroupsOfAnotherTypeYieldNothing) {
    for (const std::string& value : values) {
        if (!value.starts_with('{')) {
            EXPECT_EQ(sinksWith("sink = " + value + "; evidence = " + value + ";"), "");
            EXPECT_EQ(sinksWith("sink = { stdout = " + value + "; debugger = " + value +
                                "; syslog = " + value + "; };"),
                      "");
        }
    }
}

TEST_F(ConfigFile, StrictSettingsOfAnotherTypeEndTheReadingAndWhatWasReadStands) {
    const struct {
        std::string name;
        std::string good;
    } rows[] = {{"max_archives", "1 1L 0x1F"},
                {"compress_archives", "true"},
                {"rotate_size", "\"x\""},
                {"rotate_interval", "\"x\""}};
    for (const auto& row : rows) {
        for (const std::string& value : values) {
            if ((" " + row.good + " ").find(" " + value + " ") != std::string::npos) {
                continue;
            }
            const ProgramOutput run = runWith(
                "defaults = { default_level = \"INFO\"; sink = { stdout = { enabled = true;"
                " }; file = { path = \"x\"; " +
                    row.name + " = " + value +
                    "; }; };"
                    " loggers = { a = \"INFO\"; }; };"
                    "processes = { p = { default_level = \"ERR\"; }; };",
                {"configure=p", "report", "level=a"});
            EXPECT_EQ(run, (ProgramOutput{
                               0,
                               "instance p\ndefault INFO\nstdout enabled max=INVALID format=0\n"
                               "a INFO\n",
                               "Invalid setting in libconfig configuration file '" +
                                   path("logging.conf") + "' in element 'defaults.sink.file." +
                                   row.name + "': SettingTypeException"}))
                << row.name << " = " << value;
        }
    }
}

TEST_F(ConfigFile, RotateOfAnotherTypeIsIgnoredThoughItsNeighboursAreStrict) {
    EXPECT_EQ(sinksWith("sink = { file = { path = \"x\"; rotate = \"true\"; }; };"),
              "file#0 pids tids time max=INVALID format=0 path=x archives=3 size=5120 "
              "interval=604800 compress\n");
}

}  // namespace
