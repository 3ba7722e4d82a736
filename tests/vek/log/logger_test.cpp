#include "vek/log/logger.h"

#include <thread>

#include <gtest/gtest.h>

#include "vek/exception.h"
#include "vek/log/configurator.h"
#include "vek/log/manager.h"
#include "vek/log/statement.h"

namespace {

using vek::log::Logger;
using vek::log::Manager;

TEST(Statement, IsWrittenWhenTheLoggersLevelIsAtLeastItsOwn) {
    for (int level = vek::log::OFF; level <= vek::log::TRACE; ++level) {
        Logger logger("x", static_cast<vek::log::Level>(level));
        bool evaluated = false;
        VEK_LOG(logger, vek::log::INFO, (evaluated = true));
        EXPECT_EQ(evaluated, level >= vek::log::INFO) << level;
    }
}

TEST(Statement, StreamsItsExpressionIntoAnEmptyStream) {
    Logger logger("x", vek::log::DEBUG);
    VEK_LOG(logger, vek::log::DEBUG, "a=" << 1 << '\n');
    EXPECT_EQ(logger.streamText(), "a=1\n");
    VEK_LOG(logger, vek::log::DEBUG, "b");
    EXPECT_EQ(logger.streamText(), "b");
}

TEST(Statement, StreamLeftInAFailStateDoesNotSpoilTheNext) {
    Logger logger("x", vek::log::DEBUG);
    VEK_LOG(logger, vek::log::DEBUG, static_cast<std::streambuf*>(nullptr));
    VEK_LOG(logger, vek::log::DEBUG, "good");
    EXPECT_EQ(logger.streamText(), "good");
}

TEST(Statement, IsOneStatementOfTheLanguage) {
    Logger logger("x", vek::log::OFF);
    bool otherwise = false;
    if (logger.level() != vek::log::OFF)
        VEK_LOG(logger, vek::log::ERR, "x");
    else
        otherwise = true;
    EXPECT_TRUE(otherwise);
}

struct Throwing {
    friend std::ostream& operator<<(std::ostream&, const Throwing&) {
        throw vek::RuntimeError("in the expression");
    }
};

// True if another thread can lock the logger now.
bool canBeLockedElsewhere(Logger& logger) {
    std::thread other([&] {
        logger.stream();
        logger.releaseStream();
    });
    other.join();
    return true;
}

TEST(Statement, ThrowingExpressionReleasesTheLogger) {
    Logger logger("x", vek::log::DEBUG);
    EXPECT_THROW(VEK_LOG(logger, vek::log::DEBUG, "a" << Throwing()), vek::RuntimeError);
    EXPECT_TRUE(canBeLockedElsewhere(logger));
}

std::string nestedText(Logger& logger) {
    VEK_LOG(logger, vek::log::DEBUG, "inner");
    return "result";
}

TEST(Statement, WithinAStatementOnTheSameLoggerThrows1131AndReleasesTheLogger) {
    Logger logger("x", vek::log::DEBUG);
    try {
        VEK_LOG(logger, vek::log::DEBUG, "outer " << nestedText(logger));
        ADD_FAILURE();
    } catch (const vek::OsError& error) {
        EXPECT_EQ(error.code(), 1131u);
    }
    EXPECT_TRUE(canBeLockedElsewhere(logger));
    VEK_LOG(logger, vek::log::DEBUG, "again");
    EXPECT_EQ(logger.streamText(), "again");
}

TEST(Statement, WithinAStatementOnAnotherLoggerWorks) {
    Logger outer("outer", vek::log::DEBUG);
    Logger inner("inner", vek::log::DEBUG);
    VEK_LOG(outer, vek::log::DEBUG, "outer " << nestedText(inner));
    EXPECT_EQ(outer.streamText(), "outer result");
    EXPECT_EQ(inner.streamText(), "inner");
}

TEST(Manager, GivesTheSameLoggerForTheSameName) {
    Manager& manager = Manager::instance();
    EXPECT_EQ(&manager, &Manager::instance());
    Logger* logger = manager.getLogger("same");
    ASSERT_NE(logger, nullptr);
    EXPECT_EQ(logger->name(), "same");
    EXPECT_EQ(manager.getLogger("same"), logger);
    EXPECT_NE(manager.getLogger("Same"), logger);
}

TEST(Manager, NewLoggersStandAtInfoUntilAConfiguratorSaysWarn) {
    EXPECT_EQ(Manager::instance().getLogger("before")->level(), vek::log::INFO);
    vek::log::Configurator configurator(nullptr);
    configurator.configure("any");
    EXPECT_EQ(Manager::instance().getLogger("after")->level(), vek::log::WARN);
}

}  // namespace
