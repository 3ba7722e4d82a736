// The settings of logging.conf for sinks.
#include "tests/vek/log/config/file_fixture.h"

namespace {

using namespace vek::test;

class ConfigFileSinks : public ConfigFileTest {};

// --- sinks ------------------------------------------------------------------------------------

TEST_F(ConfigFileSinks, SinkSettingsReachTheStdoutAndTheDebuggerSink) {
    const std::string all =
        "{ enabled = true; print_time = true; print_tids = true; print_pids = true;"
        " max_level = \"info\"; format = \"{level}: {msg}\"; };";
    const std::string shown = " enabled pids tids time max=INFO format=5\n";
    EXPECT_EQ(sinksWith("sink = { stdout = " + all + " debugger = " + all + " };"),
              "stdout" + shown + "debugger" + shown);
}

TEST_F(ConfigFileSinks, EachSinkSettingCountsByItself) {
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

TEST_F(ConfigFileSinks, SinksAreOffUnlessEnabled) {
    EXPECT_EQ(sinksWith("sink = { stdout = { }; debugger = { }; syslog = { enabled = true; }; };"),
              "");
    EXPECT_EQ(sinksWith("sink = { stdout = { enabled = false; }; };"), "");
}

TEST_F(ConfigFileSinks, SyslogIsReadWithoutEffectButItsErrorsCount) {
    EXPECT_EQ(sinksWith("sink = { syslog = { enabled = true; max_level = \"TRACE\"; }; };"), "");
    const ProgramOutput run =
        runWith("defaults = { sink = { syslog = { max_level = \"loud\"; }; }; };", {"configure"});
    EXPECT_EQ(run.error, "Usage error: Invalid LEVEL string \"loud\"\n");
}

TEST_F(ConfigFileSinks, EvidenceOverridesSinkKeyByKey) {
    EXPECT_EQ(sinksWith("evidence = { stdout = { print_time = false; max_level = \"ERR\"; }; };"
                        "sink = { stdout = { enabled = true; print_time = true; print_tids = true;"
                        " max_level = \"INFO\"; }; };"),
              "stdout enabled tids max=ERR format=0\n");
    EXPECT_EQ(sinksWith("evidence = { debugger = { enabled = true; }; };"),
              "debugger enabled max=INVALID format=0\n");
}

TEST_F(ConfigFileSinks, LaterFormatReplacesTheEarlierOne) {
    EXPECT_EQ(sinksWith("sink = { stdout = { enabled = true; format = \"{msg}{msg}\"; }; };"
                        "evidence = { stdout = { format = \"x\"; }; };"),
              "stdout enabled max=INVALID format=1\n");
}

TEST_F(ConfigFileSinks, UnknownFormatKeywordIsReportedAndStaysAsText) {
    EXPECT_EQ(runWith("defaults = { sink = { stdout = { enabled = true; format = \"{no} {msg}\"; };"
                      " }; };",
                      {"configure", "log=WARN:a:text"}),
              (ProgramOutput{0, "{no} text\n",
                             "Unknown veklog message format keyword '{no}' encountered!\n"}));
}

// --- file sinks -------------------------------------------------------------------------------

TEST_F(ConfigFileSinks, FileSinkTakesEverySetting) {
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

TEST_F(ConfigFileSinks, FileSinkHasItsOwnDefaults) {
    EXPECT_EQ(sinksWith("sink = { file = { enabled = true; path = \"" + escaped(path("a.log")) +
                        "\"; }; };"),
              plainFileSink(0, path("a.log")));
}

TEST_F(ConfigFileSinks, FileSinkWithoutEnabledHasNoFileAndWritesNothing) {
    const std::string settings =
        "sink = { file = { path = \"" + escaped(path("a.log")) + "\"; }; };";
    EXPECT_EQ(outputWith(settings, {"configure=p", "log=WARN:a:text", "report"}),
              unchanged + "file#0 pids tids time max=INVALID format=0 path=" + path("a.log") +
                  " archives=3 size=5120 interval=604800 compress\n");
    EXPECT_FALSE(std::filesystem::exists(path("a.log")));
}

TEST_F(ConfigFileSinks, SizesAndIntervalsAreCutDownToTheirUnits) {
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

TEST_F(ConfigFileSinks, NegativeMaxArchivesIsAVeryLargeNumber) {
    EXPECT_NE(sinksWith("sink = { file = { path = \"x\"; max_archives = -1; }; };")
                  .find("archives=4294967295 "),
              std::string::npos);
}

TEST_F(ConfigFileSinks, ListOfFileSinksMakesEachInTheOrderOfTheirPaths) {
    EXPECT_EQ(sinksWith("sink = { file = ( { path = \"" + escaped(path("b.log")) +
                        "\"; enabled = true; }, { path = \"" + escaped(path("a.log")) +
                        "\"; enabled = true; } ); };"),
              plainFileSink(0, path("a.log")) + plainFileSink(1, path("b.log")));
    EXPECT_EQ(sinksWith("sink = { file = ( ); };"), "");
}

TEST_F(ConfigFileSinks, FileSinksOfSinkEvidenceAndBothGroupsAddUp) {
    const auto file = [this](const std::string& name) {
        return " = { file = { enabled = true; path = \"" + escaped(path(name)) + "\"; }; }; ";
    };
    EXPECT_EQ(
        reportWith("defaults = { sink" + file("a") + "evidence" + file("b") +
                   "}; processes = { p = { sink" + file("c") + "evidence" + file("d") + "}; };"),
        unchanged + plainFileSink(0, path("a")) + plainFileSink(1, path("b")) +
            plainFileSink(2, path("c")) + plainFileSink(3, path("d")));
}

TEST_F(ConfigFileSinks, FileOfAnotherTypeIsReportedAndReadingGoesOn) {
    for (const std::string value : {"1", "\"x\"", "true", "1.5", "5L", "[ 1 ]", "[ ]"}) {
        EXPECT_EQ(runWith("defaults = { sink = { file = " + value +
                              "; }; loggers = { a = \"INFO\"; }; };",
                          {"configure=p", "report", "level=a"}),
                  (ProgramOutput{0, unchanged + "a INFO own\n",
                                 "veklog config setting defaults.sink.file: Unexpected type. "
                                 "Expected group {} or a list of groups ({}, {})\n"}));
    }
}

TEST_F(ConfigFileSinks, ElementOfAnotherTypeIsReportedAndTheOthersCount) {
    for (const std::string value : {"1", "\"x\"", "true", "1.5", "[ 1 ]", "( { } )"}) {
        EXPECT_EQ(runWith("processes = { p = { evidence = { file = ( " + value +
                              ", { path = \"x\"; } ); }; }; };",
                          {"configure=p", "report"}),
                  (ProgramOutput{0,
                                 unchanged +
                                     "file#0 pids tids time max=INVALID format=0 path=x archives=3 "
                                     "size=5120 interval=604800 compress\n",
                                 "veklog config setting processes.p.evidence.file.[0]: Unexpected "
                                 "type. Expected group {}\n"}));
    }
}

TEST_F(ConfigFileSinks, FileSinkWithoutPathIsReportedAndASecondOneAsADuplicateToo) {
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

TEST_F(ConfigFileSinks, OfTwoFileSinksForOneExpandedPathTheFirstStands) {
    EXPECT_EQ(runWith("defaults = { sink = { file = { path = \"p.log\"; max_archives = 7; }; }; };"
                      "processes = { p = { sink = { file = { path = \"{instancename}.log\";"
                      " max_archives = 9; }; }; }; };",
                      {"configure=p", "report"}),
              (ProgramOutput{
                  0,
                  unchanged + "file#0 pids tids time max=INVALID format=0 path=p.log archives=7 "
                              "size=5120 interval=604800 compress\n",
                  "veklog config setting processes.p.sink.file: Duplicate configuration for "
                  "this logfile path. Overwriting settings.\n"}));
}

TEST_F(ConfigFileSinks, FileSinkThatCannotBeOpenedIsReportedAndKept) {
    const std::string file = path("missing\\a.log");
    EXPECT_EQ(runWith("defaults = { sink = { stdout = { enabled = true; }; file = { enabled = true;"
                      " path = \"" +
                          escaped(file) + "\"; }; }; };",
                      {"configure=p", "report", "log=WARN:a:text"}),
              (ProgramOutput{0,
                             unchanged + "stdout enabled max=INVALID format=0\n" +
                                 plainFileSink(0, file) + "[ WARN] a: text\n",
                             "File sink at " + file + " couldn't be opened!\n"}));
}

}  // namespace
