#include "vek/log/statement.h"

#include <iomanip>
#include <thread>

#include <gtest/gtest.h>

#include "tests/vek/log/log_capture.h"
#include "vek/exception.h"

namespace {

using namespace vek::log;
using vek_test::LogCapture;
using Texts = std::vector<std::string>;

// A manager of its own for each test, whose loggers pass everything.
class Statement : public testing::Test {
  protected:
    Statement() { manager.setDefaultLevel(TRACE); }

    // What was logged, all of it.
    Texts logged() {
        manager.start();
        manager.shutdown();
        return capture.texts();
    }

    Manager manager;
    LogCapture capture{manager};
    Logger& logger = *manager.getLogger("x");
};

TEST_F(Statement, IsWrittenWhenTheLoggersLevelIsAtLeastItsOwn) {
    int written = 0;
    for (int own = ERR; own <= TRACE; ++own) {
        for (int level = OFF; level <= TRACE; ++level) {
            manager.setLoggerLevel("x", static_cast<Level>(level));
            bool evaluated = false;
            VEK_LOG(logger, static_cast<Level>(own), (evaluated = true));
            EXPECT_EQ(evaluated, level >= own) << level << " " << own;
            written += level >= own;
        }
    }
    EXPECT_EQ(logged().size(), static_cast<std::size_t>(written));
    EXPECT_EQ(written, 15);
}

TEST_F(Statement, OfLevelZeroPassesALoggerThatIsOff) {
    manager.setLoggerLevel("x", OFF);
    VEK_LOG(logger, ERR, "off");
    VEK_LOG(logger, OFF, "nothing is less than no level");
    EXPECT_EQ(logged(), Texts{"nothing is less than no level"});
}

TEST_F(Statement, MayNameItsLoggerAsItLikes) {
    Logger& vekLogger = logger;
    VEK_LOG(vekLogger, INFO, "text");
    EXPECT_EQ(logged(), Texts{"text"});
}

TEST_F(Statement, EvaluatesItsLoggerAndItsLevelOnce) {
    int loggers = 0;
    int levels = 0;
    VEK_LOG((++loggers, logger), (++levels, INFO), "text");
    EXPECT_EQ(loggers, 1);
    EXPECT_EQ(levels, 1);
    EXPECT_EQ(logged(), Texts{"text"});
}

TEST_F(Statement, StreamsItsExpressionAsItIs) {
    VEK_LOG(logger, DEBUG, "a=" << 1 << "\r\n\n" << std::setw(4) << 7);
    VEK_LOG(logger, DEBUG, "");
    VEK_LOG(logger, DEBUG, "100% %s %n");
    VEK_LOG(logger, DEBUG, "a" << '\0' << std::string("\0b", 2));
    EXPECT_EQ(logged(), (Texts{"a=1\r\n\n   7", "", "100% %s %n", std::string("a\0\0b", 4)}));
}

TEST_F(Statement, CarriesAMegabyteAndAShortTextBehindIt) {
    const std::string megabyte(1 << 20, 'm');
    VEK_LOG(logger, DEBUG, megabyte << '!');
    VEK_LOG(logger, DEBUG, "short");
    EXPECT_EQ(logged(), (Texts{megabyte + "!", "short"}));
}

TEST_F(Statement, StreamLeftInAFailStateDoesNotSpoilTheNext) {
    VEK_LOG(logger, DEBUG, "before" << static_cast<std::streambuf*>(nullptr) << "lost");
    VEK_LOG(logger, DEBUG, "good");
    EXPECT_EQ(logged(), (Texts{"before", "good"}));
}

TEST_F(Statement, LeavesTheStreamsFormatToTheStatementsBehindIt) {
    VEK_LOG(logger, DEBUG, std::hex << 255);
    VEK_LOG(logger, DEBUG, 255);  // deliberate: only text and state flags are reset
    VEK_LOG(*manager.getLogger("y"), DEBUG, 255);
    EXPECT_EQ(logged(), (Texts{"ff", "ff", "255"}));
}

template <int, int>
int sum() {
    return 0;
}

TEST_F(Statement, TakesCommasInItsExpression) {
    VEK_LOG(logger, DEBUG, "sum " << sum<1, 2>());
    EXPECT_EQ(logged(), Texts{"sum 0"});
}

TEST_F(Statement, IsOneStatementOfTheLanguage) {
    manager.setLoggerLevel("x", OFF);
    bool otherwise = false;
    if (logger.level() != OFF)
        VEK_LOG(logger, ERR, "x");
    else
        otherwise = true;
    EXPECT_TRUE(otherwise);
}

struct Throwing {
    friend std::ostream& operator<<(std::ostream&, const Throwing&) {
        throw vek::RuntimeError("in the expression");
    }
};

// Returns if another thread can lock the logger now; otherwise the test runs out of time.
void lockElsewhere(Logger& logger) {
    std::thread other([&] {
        logger.stream();
        logger.releaseStream();
    });
    other.join();
}

TEST_F(Statement, ThrowingExpressionReleasesTheLoggerAndPostsNothing) {
    EXPECT_THROW(VEK_LOG(logger, DEBUG, "a" << Throwing()), vek::RuntimeError);
    lockElsewhere(logger);
    VEK_LOG(logger, DEBUG, "b");
    EXPECT_EQ(logged(), Texts{"b"});
}

std::string nestedText(Logger& logger) {
    VEK_LOG(logger, DEBUG, "inner");
    return "result";
}

TEST_F(Statement, WithinAStatementOnTheSameLoggerThrows1131AndReleasesTheLogger) {
    try {
        VEK_LOG(logger, DEBUG, "outer " << nestedText(logger));
        ADD_FAILURE();
    } catch (const vek::OsError& error) {
        EXPECT_EQ(error.code(), 1131u);
    }
    lockElsewhere(logger);
    VEK_LOG(logger, DEBUG, "again");
    EXPECT_EQ(logged(), Texts{"again"});
}

// Gives text even if the nested statement can't be made.
std::string nestedTextInAnyCase(Logger& logger) {
    try {
        return nestedText(logger);
    } catch (const vek::OsError&) {
        return "refused";
    }
}

TEST_F(Statement, OuterOneGoesOnWithItsTextIfItSurvivesTheNestedOne) {
    VEK_LOG(logger, DEBUG, "outer " << nestedTextInAnyCase(logger) << " end");
    lockElsewhere(logger);
    EXPECT_EQ(logged(), Texts{"outer refused end"});
}

TEST_F(Statement, WithinAStatementOnAnotherLoggerWorks) {
    VEK_LOG(logger, DEBUG, "outer " << nestedText(*manager.getLogger("y")));
    EXPECT_EQ(logged(), (Texts{"inner", "outer result"}));
}

TEST_F(Statement, ExpressionMayAskTheManagerForALogger) {
    manager.start();
    VEK_LOG(logger, DEBUG, "name " << manager.getLogger("new")->name());
    manager.shutdown();
    EXPECT_EQ(capture.texts(), Texts{"name new"});
}

TEST_F(Statement, KeepsTheStreamLockedFromItsBeginningToItsEnd) {
    vek_test::Door inside;
    vek_test::Door goOn;
    vek_test::ScopedThread first(
        [&] { VEK_LOG(logger, DEBUG, "first " << (inside.open(), goOn.pass())); });
    ASSERT_TRUE(inside.pass());
    vek_test::ScopedThread second([&] { VEK_LOG(logger, DEBUG, "second"); });
    goOn.open();
    first.join();
    second.join();
    EXPECT_EQ(logged(), (Texts{"first 1", "second"}));
}

}  // namespace
