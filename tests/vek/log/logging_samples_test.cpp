// The samples of docs/logging.md do what is said there, and are what is said there.
#include "tests/vek/log/logging_samples.h"

#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/documented_samples.h"
#include "tests/vek/log/log_capture.h"
#include "vek/log/manager.h"
#include "vek/log/sinks/stdout_sink.h"
#include "vek/log/statement.h"

namespace {

using namespace vek::log;
using support::linesOf;
using vek_test::LogCapture;
using Texts = support::Lines;

TEST(LoggingSamples, AreThoseOfTheDocumentation) {
    support::expectSamplesIn(LOGGING_DOCUMENTATION, LOGGING_SAMPLES, 7);
}

// A sink that stays until the manager is shut down.
void addStdout() {
    SinkConfig config;
    config.print_pids = config.print_tids = config.print_time = false;
    Manager::instance().addSink(new StdoutSink(config));
}

TEST(LoggingSamples, ProgramShowsItsWarning) {
    testing::internal::CaptureStdout();
    addStdout();
    samples::logInAProgram();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "[ WARN] STARTUP: only 3 of 4 disks found\n");
}

class LoggingSample : public testing::Test {
  protected:
    // What `sample` logs by way of the process's manager.
    template <class Sample>
    Texts textsOf(Sample sample) {
        Manager& manager = Manager::instance();
        manager.setDefaultLevel(INFO);
        LogCapture capture(manager);
        sample();
        manager.start();
        manager.shutdown();
        attrs.clear();
        for (const vek_test::Captured& message : capture.messages()) {
            attrs.push_back(message.attrs);
        }
        return capture.texts();
    }

    std::vector<std::map<std::string, std::string>> attrs;
};

TEST_F(LoggingSample, StatementsWriteWhatTheyAreSaidTo) {
    EXPECT_EQ(textsOf(samples::writeStatements),
              (Texts{"status 0x80070020", "status 0x80070020", "a text that is ready"}));
}

TEST_F(LoggingSample, LevelsAreSet) {
    Manager& manager = Manager::instance();
    Logger& net = *manager.getLogger("NET");
    Logger& copy = *manager.getLogger("COPY");
    manager.setLoggerLevel("COPY", TRACE);
    samples::setLevels();
    EXPECT_EQ(net.level(), TRACE);
    EXPECT_EQ(copy.level(), WARN);
}

TEST_F(LoggingSample, AttributesTravelWithTheMessage) {
    EXPECT_EQ(textsOf(samples::logAttributes), Texts{"the update was taken back"});
    EXPECT_EQ(attrs.at(0),
              (std::map<std::string, std::string>{{"service", "tolmar"}, {"version", "2.1"}}));
}

TEST_F(LoggingSample, FileGetsItsLine) {
    char directory[MAX_PATH] = {};
    char path[MAX_PATH] = {};
    GetTempPathA(sizeof directory, directory);
    GetTempFileNameA(directory, "vek", 0, path);
    textsOf([&] {
        samples::addAFile(path);
        VEK_LOG(*Manager::instance().getLogger("COPY"), INFO, "done");
    });
    const Texts lines = linesOf(path);
    std::remove(path);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].substr(std::string("2024-02-29 13:05:09").size()), " [ INFO] COPY: done");
}

TEST_F(LoggingSample, CounterCountsErrorsOnly) {
    textsOf([] {
        samples::countErrors();
        Logger& logger = *Manager::instance().getLogger("x");
        for (const Level level : {ERR, WARN, ERR, INFO}) {
            logger.emit(level, "text");
        }
    });
    EXPECT_EQ(samples::errorsCounted(), 2);
}

}  // namespace
