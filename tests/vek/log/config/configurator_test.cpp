#include "vek/log/configurator.h"

#include <gtest/gtest.h>
#include <tclap/CmdLine.h>

#include "tests/vek/log/log_capture.h"
#include "tests/vek/temporary_directory.h"
#include "tests/vek/thread/lock_support.h"
#include "vek/exception.h"
#include "vek/log/manager.h"
#include "vek/log/statement.h"
#include "vek/pal.h"

namespace {

using namespace vek::log;
using vek_test::Door;
using vek_test::HeldMessage;
using vek_test::LogCapture;
using vek_test::ScopedThread;
using Texts = std::vector<std::string>;

// The server of a configurator needs a started Winsock.
class ConfiguratorTest : public testing::Test {
  protected:
    const vek::VekPal pal{false, 0, 4, nullptr};
};

Manager& manager() {
    return Manager::instance();
}

TEST_F(ConfiguratorTest, SetsTheDefaultLevelToWarn) {
    EXPECT_EQ(manager().getLogger("before")->level(), INFO);
    Configurator configurator(nullptr);
    EXPECT_EQ(manager().getLogger("before")->level(), WARN);
    configurator.configure("any");
    EXPECT_EQ(manager().getLogger("after")->level(), WARN);
}

TEST_F(ConfiguratorTest, StartsTheManagerAndShutsItDown) {
    std::unique_ptr<LogCapture> capture;
    {
        Configurator configurator(nullptr);
        capture = std::make_unique<LogCapture>(manager());
        Logger& logger = *manager().getLogger("x");
        VEK_LOG(logger, WARN, "ahead of configure");
        EXPECT_TRUE(capture->texts().empty());
        configurator.configure("any");
        VEK_LOG(logger, WARN, "behind it");
        VEK_LOG(logger, INFO, "not passed");
    }
    EXPECT_TRUE(capture->destroyed());
    EXPECT_EQ(capture->texts(), (Texts{"ahead of configure", "behind it"}));
}

// With a file of its own, and a shutdown that lasts until `finish`.
class SavingConfigurator : public vek::test::TemporaryDirectoryTest {
  protected:
    SavingConfigurator() {
        writeFile("logging.conf", "old = 1;");
        std::vector<std::string> arguments = {"p", "--logcfg", path("logging.conf")};
        commandLine.parse(arguments);
        configurator.configure("p");
        configurator.setLoggerLevel("a", DEBUG);
    }

    void beginShutdown() {
        manager().submit(new HeldMessage(door));
        stopper = std::make_unique<ScopedThread>([this] { configurator.stop(); });
        ASSERT_TRUE(vek_test::becomesTrue([this] { return !a.passes(ERR); }));
    }

    void finish() {
        door.open();
        stopper.reset();
    }

    const vek::VekPal pal{false, 0, 4, nullptr};
    TCLAP::CmdLine commandLine{"test"};
    Configurator configurator{&commandLine};
    Door door;
    Logger& a = *manager().getLogger("a");
    std::unique_ptr<ScopedThread> stopper;
};

TEST_F(SavingConfigurator, WritesTheLevelsThatWereSetWhileTheLogShutsDown) {
    beginShutdown();
    EXPECT_NO_THROW(configurator.persistConfig());
    const std::string saved = readFile("logging.conf");
    finish();
    EXPECT_NE(saved.find("a = \"DEBUG\""), std::string::npos) << saved;
    EXPECT_EQ(saved.find("OFF"), std::string::npos) << saved;
    EXPECT_EQ(readFile("logging.conf.bak"), "old = 1;");
}

TEST_F(SavingConfigurator, RefusesOnceTheLogHasShutDownAndLeavesTheFileAndItsCopy) {
    configurator.persistConfig();
    const std::string saved = readFile("logging.conf");
    beginShutdown();
    finish();
    EXPECT_THROW(configurator.persistConfig(), vek::RuntimeError);
    EXPECT_EQ(readFile("logging.conf"), saved);
    EXPECT_EQ(readFile("logging.conf.bak"), "old = 1;");
}

TEST_F(ConfiguratorTest, IsNotAskedAnyMoreOnceItIsGone) {
    {
        Configurator configurator(nullptr);
        configurator.setLoggerLevel("x", TRACE);
    }
    EXPECT_EQ(manager().getLogger("x")->level(), WARN);
    {
        Configurator configurator(nullptr);
        configurator.setLoggerLevel("y", TRACE);
        configurator.configure("any");
    }
    EXPECT_EQ(manager().getLogger("y")->level(), WARN);
}

TEST_F(ConfiguratorTest, GivesNewLoggersTheLevelSetForExactlyTheirName) {
    Configurator configurator(nullptr);
    configurator.setLoggerLevel("exact", TRACE);
    Logger* const logger = manager().getLogger("exact");
    EXPECT_EQ(logger->level(), TRACE);
    EXPECT_FALSE(logger->usesDefault());
    Logger* const other = manager().getLogger("EXACT");
    EXPECT_EQ(other->level(), WARN);
    EXPECT_TRUE(other->usesDefault());
}

TEST_F(ConfiguratorTest, GivesLoggersThatExistTheirLevelAtOnce) {
    Configurator configurator(nullptr);
    Logger* const logger = manager().getLogger("x");
    configurator.setLoggerLevel("x", DEBUG);
    EXPECT_EQ(logger->level(), DEBUG);
    EXPECT_FALSE(logger->usesDefault());
}

TEST_F(ConfiguratorTest, KeepsItsDefaultLevelIfTheManagerRefusesTheNewOne) {
    Configurator configurator(nullptr);
    configurator.setDefaultLevel(DEBUG);
    EXPECT_EQ(configurator.getDefaultLevel(), DEBUG);
    EXPECT_THROW(configurator.setDefaultLevel(DEFAULT), vek::UsageError);
    EXPECT_EQ(configurator.getDefaultLevel(), DEBUG);
    EXPECT_EQ(manager().getLogger("x")->level(), DEBUG);
}

TEST_F(ConfiguratorTest, GivesNewLoggersALevelOfSixAsItStands) {
    Configurator configurator(nullptr);
    configurator.setLoggerLevel("six", DEFAULT);
    Logger* const made = manager().getLogger("six");
    EXPECT_EQ(made->level(), 6);
    EXPECT_FALSE(made->usesDefault());
    // The manager translates it.
    configurator.setLoggerLevel("six", DEFAULT);
    EXPECT_EQ(made->level(), WARN);
    EXPECT_TRUE(made->usesDefault());
}

TEST_F(ConfiguratorTest, IsForgottenWhenItsManagerShutsDown) {
    Configurator configurator(nullptr);
    configurator.setLoggerLevel("x", TRACE);
    Manager own;
    own.setConfigurator(&configurator);
    EXPECT_EQ(own.getLogger("x")->level(), TRACE);
    EXPECT_FALSE(own.getLogger("x")->usesDefault());
    own.start();
    own.shutdown();
    EXPECT_EQ(own.getLogger("x")->level(), INFO);
}

}  // namespace
