// What a shutdown does to the loggers, while the queue drains and afterwards.
#include <ios>

#include <gtest/gtest.h>

#include "tests/support/heap_use.h"
#include "tests/vek/log/log_capture.h"
#include "tests/vek/thread/lock_support.h"
#include "vek/exception.h"
#include "vek/log/level_source.h"
#include "vek/log/manager.h"
#include "vek/log/statement.h"

namespace {

using namespace vek::log;
using vek_test::Door;
using vek_test::HeldMessage;
using vek_test::LogCapture;
using vek_test::ScopedThread;
using Texts = std::vector<std::string>;

// As "x=DEBUG".
Texts ownLevelsOf(const Manager& manager) {
    Texts levels;
    for (const auto& [name, level] : manager.ownLevels()) {
        levels.push_back(name + "=" + levelName(level));
    }
    return levels;
}

// A manager whose queue drains until `finish`.
class DrainingManager : public testing::Test {
  protected:
    DrainingManager() {
        manager.setLoggerLevel("x", DEBUG);
        manager.submit(new HeldMessage(door));
        manager.start();
    }
    ~DrainingManager() override { finish(); }

    void beginShutdown() {
        stopper = std::make_unique<ScopedThread>([this] { manager.shutdown(); });
        ASSERT_TRUE(vek_test::becomesTrue([this] { return !x.passes(ERR) && !y.passes(ERR); }));
    }

    void finish() {
        door.open();
        stopper.reset();
    }

    static bool isWritten(Logger& logger, Level level) {
        bool evaluated = false;
        VEK_LOG(logger, level, (evaluated = true));
        return evaluated;
    }

    Door door;
    Manager manager;
    LogCapture capture{manager};
    Logger& x = *manager.getLogger("x");
    Logger& y = *manager.getLogger("y");
    std::unique_ptr<ScopedThread> stopper;
};

TEST_F(DrainingManager, WritesNoStatementsButKeepsTheLevelsThatWereSet) {
    beginShutdown();
    EXPECT_FALSE(isWritten(x, ERR));
    EXPECT_FALSE(isWritten(y, ERR));
    EXPECT_EQ(x.level(), DEBUG);
    EXPECT_FALSE(x.usesDefault());
    EXPECT_EQ(y.level(), INFO);
    EXPECT_TRUE(y.usesDefault());
    EXPECT_EQ(manager.listLoggers(), (std::vector<Logger*>{&x, &y}));
    EXPECT_EQ(ownLevelsOf(manager), Texts{"x=DEBUG"});
    finish();
    EXPECT_EQ(capture.texts(), Texts{"held"});
}

TEST_F(DrainingManager, TakesNewLevelsWithoutWritingStatements) {
    beginShutdown();
    manager.setLoggerLevel("y", TRACE);
    manager.setLoggerLevel("x", DEFAULT);
    manager.setDefaultLevel(WARN);
    EXPECT_EQ(ownLevelsOf(manager), Texts{"y=TRACE"});
    EXPECT_EQ(x.level(), WARN);
    EXPECT_FALSE(isWritten(x, ERR));
    EXPECT_FALSE(isWritten(y, ERR));
}

TEST_F(DrainingManager, MakesLoggersThatWriteNothing) {
    beginShutdown();
    Logger& late = *manager.getLogger("late");
    EXPECT_EQ(late.level(), INFO);
    EXPECT_FALSE(isWritten(late, ERR));
    manager.setLoggerLevel("late", TRACE);
    EXPECT_FALSE(isWritten(late, ERR));
}

TEST_F(DrainingManager, TakesSinksUntilTheyAreDestroyed) {
    beginShutdown();
    LogCapture late(manager);
    ASSERT_TRUE(manager.addSinkUnlessShutDown(late.getSink()));
    finish();
    EXPECT_TRUE(late.destroyed());
}

TEST_F(DrainingManager, HasNoLevelsAndTakesNoSinksOnceTheyAreGone) {
    beginShutdown();
    finish();
    try {
        manager.ownLevels();
        ADD_FAILURE();
    } catch (const vek::RuntimeError& error) {
        EXPECT_NE(std::string(error.what()).find("The log has been shut down."), std::string::npos);
    }
    LogCapture late(manager);
    manager.removeSink(late.getSink());
    EXPECT_FALSE(manager.addSinkUnlessShutDown(late.getSink()));
    EXPECT_TRUE(manager.withSinks([](const auto& sinks, std::uint32_t) { return sinks.empty(); }));
    // It exists again, but its level can't be saved.
    EXPECT_EQ(manager.getLogger("x")->level(), INFO);
    EXPECT_THROW(manager.ownLevels(), vek::RuntimeError);
}

TEST_F(DrainingManager, HasThemAgainBehindANewStart) {
    beginShutdown();
    finish();
    manager.start();
    EXPECT_TRUE(ownLevelsOf(manager).empty());
    manager.setLoggerLevel(manager.getLogger("x")->name(), ERR);
    EXPECT_EQ(ownLevelsOf(manager), Texts{"x=ERR"});
    EXPECT_TRUE(isWritten(x, ERR));
}

TEST_F(DrainingManager, HasThemAgainWithANewConfigurator) {
    struct Source final : LevelSource {
        void applyConfiguredLevel(Logger&) override {}
    } source;
    beginShutdown();
    finish();
    manager.setConfigurator(nullptr);
    EXPECT_THROW(manager.ownLevels(), vek::RuntimeError);
    manager.setConfigurator(&source);
    EXPECT_TRUE(ownLevelsOf(manager).empty());
    LogCapture late(manager);
    manager.removeSink(late.getSink());
    EXPECT_TRUE(manager.addSinkUnlessShutDown(late.getSink()));
    manager.setConfigurator(nullptr);
}

TEST(LoggerAfterAShutdown, HasTheStateOfANewOne) {
    Manager manager;
    Logger& before = *manager.getLogger("x");
    manager.setLoggerLevel("x", TRACE);
    before.setPid(1);
    VEK_LOG(before, ERR, std::hex << std::showbase);
    manager.start();
    manager.shutdown();
    manager.setDefaultLevel(WARN);
    Logger& after = *manager.getLogger("x");
    EXPECT_EQ(after.name(), "x");
    EXPECT_EQ(after.level(), WARN);
    EXPECT_TRUE(after.usesDefault());
    EXPECT_EQ(manager.listLoggers(), std::vector<Logger*>{&after});
    LogCapture capture(manager);
    VEK_LOG(after, INFO, "not passed");
    VEK_LOG(after, WARN, 255);
    VEK_LOG(after, WARN, std::hex << 255);
    VEK_LOG(after, WARN, 255);
    manager.start();
    manager.shutdown();
    EXPECT_EQ(capture.texts(), (Texts{"255", "ff", "ff"}));
    EXPECT_EQ(capture.messages()[0].pid, GetCurrentProcessId());
}

void startAndShutDown(Manager& manager, int rounds) {
    for (int round = 0; round < rounds; ++round) {
        for (int i = 0; i < 10; ++i) {
            VEK_LOG(*manager.getLogger("logger " + std::to_string(i)), INFO, "text");
        }
        manager.start();
        manager.shutdown();
    }
}

TEST(LoggerAfterAShutdown, TakesNoMemoryOverAThousandRounds) {
    Manager manager;
    startAndShutDown(manager, 10);
    const support::HeapUse before = support::heapUse();
    startAndShutDown(manager, 1000);
    const support::HeapUse after = support::heapUse();
    RecordProperty("bytes", std::to_string(after.bytes - before.bytes));
    ASSERT_GT(before.blocks, 0u);
    EXPECT_LT(after.bytes, before.bytes + 50000);
    EXPECT_LT(after.blocks, before.blocks + 100);
}

}  // namespace
