#include "vek/log/manager.h"

#include <iostream>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/vek/log/captured_errors.h"
#include "tests/vek/log/log_capture.h"
#include "vek/exception.h"
#include "vek/log/statement.h"

namespace {

using namespace vek::log;
using vek::test::CapturedErrors;
using vek_test::LogCapture;
using vek_test::ScopedThread;
using Texts = std::vector<std::string>;

template <class F>
std::string usageErrorOf(F f) {
    try {
        f();
    } catch (const vek::UsageError& error) {
        return error.what();
    }
    return "";
}

// --- loggers ---

TEST(Manager, IsOneForTheProcess) {
    EXPECT_EQ(&Manager::instance(), &Manager::instance());
}

TEST(Manager, GivesTheSameLoggerForTheSameName) {
    Manager manager;
    Logger* const logger = manager.getLogger("same");
    ASSERT_NE(logger, nullptr);
    EXPECT_EQ(logger->name(), "same");
    EXPECT_EQ(manager.getLogger("same"), logger);
    EXPECT_NE(manager.getLogger("Same"), logger);
    EXPECT_NE(manager.getLogger("same "), logger);
    EXPECT_NE(manager.getLogger(std::string("same\0", 5)), logger);
    EXPECT_EQ(manager.getLogger("")->name(), "");
}

TEST(Manager, MakesOneLoggerForConcurrentFirstCalls) {
    for (int round = 0; round < 50; ++round) {
        Manager manager;
        Logger* seen[4] = {};
        std::atomic<int> ready = 0;
        {
            std::vector<std::unique_ptr<ScopedThread>> threads;
            for (Logger*& logger : seen) {
                threads.push_back(std::make_unique<ScopedThread>([&] {
                    ++ready;
                    while (ready < 4) {
                        std::this_thread::yield();
                    }
                    logger = manager.getLogger("first");
                }));
            }
        }
        EXPECT_EQ(manager.listLoggers(), std::vector<Logger*>{seen[0]});
        for (Logger* const logger : seen) {
            EXPECT_EQ(logger, seen[0]);
        }
    }
}

TEST(Manager, ListsTheLoggersByName) {
    Manager manager;
    EXPECT_TRUE(manager.listLoggers().empty());
    Logger* const b = manager.getLogger("b");
    Logger* const a = manager.getLogger("a");
    Logger* const capital = manager.getLogger("B");
    EXPECT_EQ(manager.listLoggers(), (std::vector<Logger*>{capital, a, b}));
}

// --- levels ---

TEST(ManagerLevels, NewLoggersFollowTheDefaultLevelWhichIsInfoAtFirst) {
    Manager manager;
    Logger* const early = manager.getLogger("early");
    EXPECT_EQ(early->level(), INFO);
    EXPECT_TRUE(early->usesDefault());
    manager.setDefaultLevel(DEBUG);
    Logger* const late = manager.getLogger("late");
    for (Logger* const logger : {early, late}) {
        EXPECT_EQ(logger->level(), 4);
        EXPECT_TRUE(logger->usesDefault());
    }
}

TEST(ManagerLevels, LevelOfItsOwnStaysUntilTheLoggerFollowsTheDefaultAgain) {
    Manager manager;
    Logger* const logger = manager.getLogger("x");
    manager.setLoggerLevel("x", WARN);
    EXPECT_FALSE(logger->usesDefault());
    manager.setDefaultLevel(TRACE);
    EXPECT_EQ(logger->level(), WARN);
    manager.setLoggerLevel("x", DEFAULT);
    EXPECT_EQ(logger->level(), TRACE);
    EXPECT_TRUE(logger->usesDefault());
    manager.setDefaultLevel(ERR);
    EXPECT_EQ(logger->level(), ERR);
}

TEST(ManagerLevels, DefaultLevelOfSixAndAboveIsRefusedAndChangesNothing) {
    Manager manager;
    Logger* const logger = manager.getLogger("x");
    for (const int bad : {6, 7, 8, 0x7fffffff}) {
        EXPECT_EQ(usageErrorOf([&] { manager.setDefaultLevel(static_cast<Level>(bad)); }),
                  "Usage error: log manager: bad default level value");
    }
    EXPECT_EQ(logger->level(), INFO);
    EXPECT_EQ(manager.getLogger("y")->level(), INFO);
}

TEST(ManagerLevels, NegativeDefaultLevelIsNotRefused) {
    Manager manager;
    Logger* const logger = manager.getLogger("x");
    manager.setDefaultLevel(static_cast<Level>(-1));
    EXPECT_EQ(logger->level(), -1);
}

TEST(ManagerLevels, LevelOfALoggerIsNotCheckedOtherwise) {
    Manager manager;
    Logger* const logger = manager.getLogger("x");
    for (const int level : {7, 8, -1, 0}) {
        manager.setLoggerLevel("x", static_cast<Level>(level));
        EXPECT_EQ(logger->level(), level);
        EXPECT_FALSE(logger->usesDefault());
    }
}

TEST(ManagerLevels, LevelForAnUnknownNameMakesNoLoggerAndIsForgotten) {
    Manager manager;
    manager.setLoggerLevel("nobody", TRACE);
    EXPECT_TRUE(manager.listLoggers().empty());
    EXPECT_EQ(manager.getLogger("nobody")->level(), INFO);
}

TEST(ManagerLevels, OnForkRenewsThePidOfTheManagerAndItsLoggers) {
    Manager manager;
    manager.getLogger("x")->setPid(1);
    manager.onFork();
    const std::unique_ptr<Message> message(manager.getLogger("x")->makeMessage(INFO, ""));
    EXPECT_EQ(message->pid, GetCurrentProcessId());
    EXPECT_EQ(manager.withSinks([](const std::list<Sink*>&, std::uint32_t pid) { return pid; }),
              GetCurrentProcessId());
}

// --- sinks ---

std::vector<Sink*> sinksOf(const Manager& manager) {
    return manager.withSinks([](const std::list<Sink*>& sinks, std::uint32_t) {
        return std::vector<Sink*>(sinks.begin(), sinks.end());
    });
}

// Logs one message of each level and has all of them delivered.
void logEachLevel(Manager& manager) {
    for (int level = OFF; level <= INVALID; ++level) {
        manager.getLogger("x")->emit(static_cast<Level>(level),
                                     levelName(static_cast<Level>(level)));
    }
    manager.start();
    manager.shutdown();
}

TEST(ManagerSinks, TakeMessagesUpToTheirLevel) {
    Manager manager;
    LogCapture warn(manager, WARN);
    LogCapture off(manager, OFF);
    LogCapture trace(manager, TRACE);
    LogCapture all(manager, INVALID);
    logEachLevel(manager);
    EXPECT_EQ(off.texts(), Texts{"OFF"});
    EXPECT_EQ(warn.texts(), (Texts{"OFF", "ERR", "WARN"}));
    EXPECT_EQ(trace.texts(), (Texts{"OFF", "ERR", "WARN", "INFO", "DEBUG", "TRACE"}));
    EXPECT_EQ(all.texts().size(), 8u);
}

TEST(ManagerSinks, SeeEachMessageInTheOrderOfAdding) {
    Manager manager;
    std::string order;
    LogCapture first(manager, INVALID, [&](const Message& m) { order += "1" + m.text + " "; });
    LogCapture second(manager, INVALID, [&](const Message& m) { order += "2" + m.text + " "; });
    manager.getLogger("x")->emit(INFO, "a");
    manager.getLogger("x")->emit(INFO, "b");
    manager.start();
    manager.shutdown();
    EXPECT_EQ(order, "1a 2a 1b 2b ");
}

TEST(ManagerSinks, AreChosenByTheKindOfMessage) {
    Manager manager;
    LogCapture capture(manager);
    manager.getLogger("x")->submit(manager.getLogger("x")->makeAttrMessage(INFO, "with"));
    manager.getLogger("x")->submit(manager.getLogger("x")->makeMessage(INFO, "without"));
    manager.start();
    manager.shutdown();
    EXPECT_TRUE(capture.messages().at(0).withAttrs);
    EXPECT_FALSE(capture.messages().at(1).withAttrs);
}

TEST(ManagerSinks, MayBeNone) {
    Manager manager;
    manager.getLogger("x")->emit(INFO, "to nobody");
    manager.start();
    manager.getLogger("x")->emit(INFO, "to nobody");
    manager.shutdown();
}

TEST(ManagerSinks, RemovedOneBelongsToTheCallerAgain) {
    Manager manager;
    LogCapture capture(manager);
    manager.start();
    manager.getLogger("x")->emit(INFO, "seen");
    ASSERT_TRUE(capture.waitFor(1));
    manager.removeSink(capture.getSink());
    manager.removeSink(capture.getSink());  // it's not there any more
    manager.getLogger("x")->emit(INFO, "unseen");
    manager.shutdown();
    EXPECT_EQ(capture.texts(), Texts{"seen"});
    EXPECT_FALSE(capture.destroyed());
}

TEST(ManagerSinks, AddedTwiceSeesEachMessageTwiceAndIsRemovedOnceEach) {
    Manager manager;
    LogCapture capture(manager);
    manager.addSink(capture.getSink());
    manager.start();
    manager.getLogger("x")->emit(INFO, "a");
    ASSERT_TRUE(capture.waitFor(2));
    manager.removeSink(capture.getSink());
    EXPECT_EQ(sinksOf(manager), std::vector<Sink*>{capture.getSink()});
    manager.addSink(capture.getSink());
    manager.shutdown();  // destroys it once
    EXPECT_TRUE(capture.destroyed());
}

TEST(ManagerSinks, NullIsRefused) {
    Manager manager;
    EXPECT_EQ(usageErrorOf([&] { manager.addSink(nullptr); }),
              "Usage error: log manager: received null sink");
}

TEST(ManagerSinks, AreListedInOrderUnderTheMutex) {
    Manager manager;
    LogCapture first(manager);
    LogCapture second(manager);
    EXPECT_EQ(sinksOf(manager), (std::vector<Sink*>{first.getSink(), second.getSink()}));
}

// --- sinks that fail ---

TEST(ManagerFailingSinks, AreReportedOnceAndGoneForTheNextMessage) {
    Manager manager;
    LogCapture ahead(manager);
    bool goneTooEarly = false;
    LogCapture* failing = nullptr;
    int offered = 0;
    LogCapture failingSink(manager, INVALID, [&](const Message&) {
        ++offered;
        throw vek::RuntimeError("disk full", vek::UsageError("the cause"));
    });
    failing = &failingSink;
    LogCapture behind(manager, INVALID, [&](const Message& m) {
        goneTooEarly |= m.text == "1" && failing->destroyed();
    });
    const CapturedErrors errors;
    manager.getLogger("x")->emit(INFO, "1");
    manager.getLogger("x")->emit(INFO, "2");
    manager.start();
    ASSERT_TRUE(behind.waitFor(2));
    EXPECT_TRUE(failingSink.destroyed());
    EXPECT_EQ(sinksOf(manager), (std::vector<Sink*>{ahead.getSink(), behind.getSink()}));
    manager.shutdown();
    EXPECT_EQ(errors.text(),
              "Failed to store message in an sink:\n"
              "disk full: Usage error: the cause\n"
              "\n"
              "Removing this sink ...\n");
    EXPECT_EQ(offered, 1);
    EXPECT_FALSE(goneTooEarly);
    EXPECT_EQ(ahead.texts(), (Texts{"1", "2"}));
    EXPECT_EQ(behind.texts(), (Texts{"1", "2"}));
}

TEST(ManagerFailingSinks, AreAllRemovedInOneRound) {
    Manager manager;
    const auto fail = [](const Message&) { throw vek::OsError(5); };
    LogCapture first(manager, INVALID, fail);
    LogCapture between(manager);
    LogCapture second(manager, INVALID, fail);
    manager.addSink(first.getSink());  // fails twice in the round, and is destroyed once
    const CapturedErrors errors;
    logEachLevel(manager);
    EXPECT_TRUE(first.destroyed());
    EXPECT_TRUE(second.destroyed());
    EXPECT_EQ(between.texts().size(), 8u);
    const std::string reports = errors.text();
    std::size_t count = 0;
    for (std::size_t at = 0;
         (at = reports.find("Removing this sink ...\n", at)) != std::string::npos; ++at) {
        ++count;
    }
    EXPECT_EQ(count, 3u);
}

TEST(ManagerFailingSinks, ThatThrowAnythingElseEndTheWorkerWithTheThreadsReport) {
    Manager manager;
    LogCapture failing(manager, INVALID,
                       [](const Message&) { throw std::runtime_error("broken"); });
    LogCapture behind(manager);
    std::string report;
    {
        const CapturedErrors errors;
        manager.getLogger("x")->emit(INFO, "1");
        manager.getLogger("x")->emit(INFO, "2");
        manager.start();
        manager.shutdown();
        report = errors.text();
    }
    EXPECT_TRUE(report.starts_with("Thread log-manager (")) << report;
    EXPECT_TRUE(report.ends_with(") died with std::exception: broken\n")) << report;
    EXPECT_TRUE(behind.texts().empty());
    // The shutdown went its way nevertheless.
    EXPECT_TRUE(failing.destroyed());
    EXPECT_TRUE(behind.destroyed());
}

}  // namespace
