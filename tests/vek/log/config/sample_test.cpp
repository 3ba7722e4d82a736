// The sample of a configuration file in docs, and the tables of configuration.md.
#include "tests/support/files.h"
#include "tests/vek/log/config/config_fixture.h"

namespace {

using namespace vek::test;

class ConfigSample : public ConfigTest {};

TEST_F(ConfigSample, IsReadToItsEndAndLogs) {
    support::copyFile(SAMPLE_CONFIG, path("logging.conf"));
    support::copyFile(CONFIGURED_PROGRAM, path("tolmarhlp.exe"));
    EXPECT_EQ(
        support::runProgram(path("tolmarhlp.exe"),
                            {"configure", "report", "level=TOLMAR_HELPER", "level=x",
                             "log=DEBUG:TOLMAR_HELPER:step", "log=ERR:x:failure"}),
        (ProgramOutput{0,
                       "instance tolmarhlp\ndefault DEBUG\ndebugger enabled max=INFO format=0\n"
                       "file#0 enabled pids tids time max=ERR format=9 path=" +
                           path("tolmarhlp.errors.log") +
                           " archives=3 size=5120 interval=604800 compress\n"
                           "file#1 enabled pids time max=INVALID format=0 path=" +
                           path("tolmarhlp.log") +
                           " rotate archives=5 size=10240 interval=86400 compress\n"
                           "TOLMAR_HELPER TRACE own\nx DEBUG\n",
                       ""}));
    EXPECT_NE(readFile("tolmarhlp.log").find("[DEBUG] TOLMAR_HELPER: step"), std::string::npos);
    EXPECT_NE(readFile("tolmarhlp.log").find("[  ERR] x: failure"), std::string::npos);
    const std::string errors = readFile("tolmarhlp.errors.log");
    EXPECT_EQ(errors.find("step"), std::string::npos);
    EXPECT_NE(errors.find("   ERR x: failure"), std::string::npos) << errors;
}

TEST_F(ConfigSample, KnowsTheOtherModeOfTheHelper) {
    support::copyFile(SAMPLE_CONFIG, path("logging.conf"));
    support::copyFile(CONFIGURED_PROGRAM, path("tolmarhlp.exe"));
    EXPECT_EQ(support::runProgram(path("tolmarhlp.exe"), {"configure=tolmarhlp-gui", "level=x"}),
              (ProgramOutput{0, "x INFO\n", ""}));
}

}  // namespace
