// What is made of settings of logging.conf that are of the wrong type.
#include "tests/vek/log/config/file_fixture.h"

namespace {

using namespace vek::test;

class ConfigFileTypes : public ConfigFileTest {};

// A value of each type.
const std::string values[] = {"1",     "1L",  "0x1F", "1.5", "true",
                              "\"x\"", "[1]", "(1)",  "{ }", "{ enabled = true; }"};

bool isText(const std::string& value) {
    return value.starts_with('"');
}

TEST_F(ConfigFileTypes, LenientSettingsOfAnotherTypeAreAsIfTheyWereAbsent) {
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
        EXPECT_EQ(outputWith(settings), unchanged + "stdout enabled max=INVALID format=0\n" +
                                            plainFileSink(0, path("a.log")))
            << settings;
        if (value != "true") {
            EXPECT_EQ(sinksWith("sink = { stdout = { enabled = " + value + "; }; };"), "") << value;
        }
    }
}

TEST_F(ConfigFileTypes, PathOfAnotherTypeIsAsIfItWereAbsent) {
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

TEST_F(ConfigFileTypes, SinkGroupsOfAnotherTypeYieldNothing) {
    for (const std::string& value : values) {
        if (!value.starts_with('{')) {
            EXPECT_EQ(sinksWith("sink = " + value + "; evidence = " + value + ";"), "");
            EXPECT_EQ(sinksWith("sink = { stdout = " + value + "; debugger = " + value +
                                "; syslog = " + value + "; };"),
                      "");
        }
    }
}

TEST_F(ConfigFileTypes, StrictSettingsOfAnotherTypeEndTheReadingAndWhatWasReadStands) {
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

TEST_F(ConfigFileTypes, RotateOfAnotherTypeIsIgnoredThoughItsNeighboursAreStrict) {
    EXPECT_EQ(sinksWith("sink = { file = { path = \"x\"; rotate = \"true\"; }; };"),
              "file#0 pids tids time max=INVALID format=0 path=x archives=3 size=5120 "
              "interval=604800 compress\n");
}

}  // namespace
