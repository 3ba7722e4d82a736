// The helper's own log, with its real locals, on a sink that the program has added.
#include <string>

#include <gtest/gtest.h>

#include "source/tolmar/run_helper.h"
#include "tests/source/tolmar/scripted_system.h"
#include "vek/log/configurator.h"
#include "vek/log/manager.h"
#include "vek/log/sinks/stdout_sink.h"
#include "vek/pal.h"

namespace {

using tolmar::test::ScriptedSystem;
using namespace vek::log;

// What the helper writes to its standard output with the command line `tail`, as lines of the
// logger `name` that is at `level`.
std::string logOf(const char* tail, const char* name, Level level, ScriptedSystem& system) {
    Manager& manager = Manager::instance();
    // Discards the lines of other tests of this process, which had no worker.
    manager.start();
    manager.shutdown();
    manager.getLogger(name);
    manager.setLoggerLevel(name, level);
    SinkConfig config;
    config.enabled = true;
    config.print_pids = config.print_tids = config.print_time = false;
    testing::internal::CaptureStdout();
    manager.addSink(new StdoutSink(config));
    const int code = tolmar::runHelper<vek::VekPal, Configurator>(system, tail);
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_EQ(code, 0);
    return output;
}

TEST(HelperLog, ShowsTheLinesOfARestartOfTheGui) {
    ScriptedSystem system;
    EXPECT_EQ(logOf("-restartgui D", "TOLMAR_GUIHELPER", DEBUG, system),
              "[DEBUG] TOLMAR_GUIHELPER: wait for event2\n"
              "[DEBUG] TOLMAR_GUIHELPER: event2 triggert\n"
              "[DEBUG] TOLMAR_GUIHELPER: start tolmar.exe -gui wuth retcode=33\n");
}

TEST(HelperLog, ShowsTheLinesOfAReplacementUpToItsEnd) {
    ScriptedSystem system;
    system.serviceExists = false;
    EXPECT_EQ(logOf("D", "TOLMAR_HELPER", DEBUG, system),
              "[DEBUG] TOLMAR_HELPER: start tolmarhlp\n"
              "[DEBUG] TOLMAR_HELPER: stopping tolmar\n");
}

TEST(HelperLog, IsEmptyAtALessVerboseLevel) {
    ScriptedSystem system;
    EXPECT_EQ(logOf("-restartgui D", "TOLMAR_GUIHELPER", INFO, system), "");
}

}  // namespace
