// The states of the manager, and many threads at once. A full queue is tested in
// back_pressure_test.cpp, the ends of processes in process_end_test.cpp.
#include <map>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/vek/log/log_capture.h"
#include "vek/exception.h"
#include "vek/log/manager.h"
#include "vek/log/statement.h"

namespace {

using namespace vek::log;
using vek_test::Door;
using vek_test::LogCapture;
using vek_test::ScopedThread;
using Texts = std::vector<std::string>;

TEST(ManagerLife, MessagesWaitForTheStart) {
    Manager manager;
    manager.getLogger("x")->emit(INFO, "early");
    LogCapture capture(manager);
    EXPECT_TRUE(capture.texts().empty());
    manager.start();
    ASSERT_TRUE(capture.waitFor(1));
    EXPECT_EQ(capture.texts(), Texts{"early"});
}

TEST(ManagerLife, StartingTwiceIsRefused) {
    Manager manager;
    manager.start();
    try {
        manager.start();
        ADD_FAILURE();
    } catch (const vek::UsageError& error) {
        EXPECT_STREQ(error.what(), "Usage error: The thread has already been started.");
    }
}

TEST(ManagerLife, ShutdownWithoutStartLeavesLoggersAndSinksInPlace) {
    Manager manager;
    LogCapture capture(manager);
    Logger* const logger = manager.getLogger("x");
    manager.setLoggerLevel("x", TRACE);
    logger->emit(INFO, "kept");
    manager.shutdown();
    EXPECT_FALSE(capture.destroyed());
    EXPECT_EQ(manager.getLogger("x"), logger);
    EXPECT_EQ(logger->level(), TRACE);
    manager.start();
    ASSERT_TRUE(capture.waitFor(1));
}

TEST(ManagerLife, ShutdownDeliversAllThatWasQueuedBeforeIt) {
    Manager manager;
    LogCapture capture(manager);
    Texts expected;
    for (int i = 0; i < 5000; ++i) {
        expected.push_back(std::to_string(i));
        manager.getLogger("x")->emit(INFO, expected.back());
    }
    manager.start();
    manager.shutdown();
    EXPECT_EQ(capture.texts(), expected);
}

TEST(ManagerLife, ShutdownDropsLoggersAndDestroysSinks) {
    Manager manager;
    LogCapture first(manager);
    LogCapture second(manager);
    manager.getLogger("x");
    manager.start();
    manager.shutdown();
    EXPECT_TRUE(first.destroyed());
    EXPECT_TRUE(second.destroyed());
    EXPECT_TRUE(manager.listLoggers().empty());
    EXPECT_TRUE(manager.withSinks([](const auto& sinks, std::uint32_t) { return sinks.empty(); }));
}

// Records its destruction.
class EndingSink : public Sink {
  public:
    EndingSink(std::string name, std::string& toTell)
        : Sink(config), ownName(std::move(name)), ends(toTell) {}
    ~EndingSink() override { ends += ownName; }
    int type() const override { return sinkStdout; }
    using Sink::store;
    void store(const Message& /*message*/) override {}
    std::string id() const override { return ownName; }

  private:
    const SinkConfig config;
    const std::string ownName;
    std::string& ends;
};

TEST(ManagerLife, ShutdownDestroysSinksInTheOrderOfAdding) {
    Manager manager;
    std::string ends;
    for (const char* const name : {"c", "a", "b"}) {
        manager.addSink(new EndingSink(name, ends));
    }
    manager.start();
    manager.shutdown();
    EXPECT_EQ(ends, "cab");
}

TEST(ManagerLife, ShutdownTwiceIsHarmless) {
    Manager manager;
    manager.start();
    manager.shutdown();
    Logger* const later = manager.getLogger("later");
    manager.shutdown();
    EXPECT_EQ(manager.getLogger("later"), later);
}

TEST(ManagerLife, ShutdownsOfTwoThreadsAtOnceAreHarmless) {
    for (int round = 0; round < 30; ++round) {
        Manager manager;
        LogCapture capture(manager);
        manager.getLogger("x")->emit(INFO, "text");
        manager.start();
        ScopedThread other([&] { manager.shutdown(); });
        manager.shutdown();
        EXPECT_TRUE(capture.destroyed());
        EXPECT_EQ(capture.texts(), Texts{"text"});
    }
}

TEST(ManagerLife, LoggerMadeAfterTheShutdownFollowsTheDefaultAndQueuesUndelivered) {
    Manager manager;
    manager.setDefaultLevel(DEBUG);
    manager.setLoggerLevel("x", ERR);
    manager.start();
    manager.shutdown();
    Logger* const logger = manager.getLogger("x");
    EXPECT_EQ(logger->level(), DEBUG);
    EXPECT_TRUE(logger->usesDefault());
    LogCapture capture(manager);
    VEK_LOG(*logger, DEBUG, "undelivered");
    EXPECT_TRUE(capture.texts().empty());
    // A new start finds it.
    manager.start();
    ASSERT_TRUE(capture.waitFor(1));
    EXPECT_EQ(capture.texts(), Texts{"undelivered"});
}

TEST(ManagerLife, DestructionShutsDown) {
    auto manager = std::make_unique<Manager>();
    LogCapture capture(*manager);
    manager->start();
    manager->getLogger("x")->emit(INFO, "last words");
    manager.reset();
    EXPECT_TRUE(capture.destroyed());
    EXPECT_EQ(capture.texts(), Texts{"last words"});
}

// Counts how many there are.
class CountedMessage : public Message {
  public:
    CountedMessage() : Message("x", "text", INFO, 0) { ++count; }
    ~CountedMessage() override { --count; }
    static inline std::atomic<int> count = 0;
};

TEST(ManagerLife, DestructionWithoutStartDestroysSinksAndMessagesUnseen) {
    auto manager = std::make_unique<Manager>();
    LogCapture capture(*manager);
    manager->submit(new CountedMessage);
    EXPECT_EQ(CountedMessage::count, 1);
    manager.reset();
    EXPECT_TRUE(capture.destroyed());
    EXPECT_TRUE(capture.texts().empty());
    EXPECT_EQ(CountedMessage::count, 0);
}

TEST(ManagerLife, MessagesBehindTheStopMarkAreDestroyedUnseen) {
    auto manager = std::make_unique<Manager>();
    manager->start();
    manager->shutdown();
    LogCapture capture(*manager);
    manager->submit(new CountedMessage);
    manager.reset();
    EXPECT_EQ(CountedMessage::count, 0);
    EXPECT_TRUE(capture.texts().empty());
}

TEST(ManagerLife, EachMessageIsDestroyedOnceItsSinksHaveSeenIt) {
    Manager manager;
    int during = 0;
    LogCapture capture(manager, INVALID, [&](const Message&) {
        during = std::max(during, CountedMessage::count.load());
    });
    manager.start();
    for (std::size_t i = 1; i <= 20; ++i) {
        manager.submit(new CountedMessage);
        ASSERT_TRUE(capture.waitFor(i));
    }
    manager.shutdown();
    EXPECT_LE(during, 2);
    EXPECT_EQ(CountedMessage::count, 0);
}

// --- many threads ---

constexpr int producers = 8;
constexpr int messagesEach = 2500;

// Splits "thread number" and checks that each thread's numbers come in order, without a gap.
void expectAllInOrder(const std::vector<vek_test::Captured>& messages) {
    std::map<std::string, int> next;
    std::map<std::string, std::uint32_t> tids;
    for (const vek_test::Captured& message : messages) {
        std::istringstream text(message.text);
        std::string thread;
        int number = -1;
        text >> thread >> number;
        ASSERT_EQ(number, next[thread]) << thread;
        ++next[thread];
        const auto known = tids.emplace(thread, message.tid).first;
        ASSERT_EQ(known->second, message.tid);
    }
    ASSERT_EQ(next.size(), static_cast<std::size_t>(producers));
    for (const auto& [thread, count] : next) {
        EXPECT_EQ(count, messagesEach) << thread;
    }
}

// More than the queue holds, so that threads wait, too.
void logFromManyThreads(Manager& manager, bool oneLogger) {
    std::vector<std::unique_ptr<ScopedThread>> threads;
    for (int p = 0; p < producers; ++p) {
        threads.push_back(std::make_unique<ScopedThread>([&manager, oneLogger, p] {
            Logger& logger = *manager.getLogger(oneLogger ? "x" : std::to_string(p));
            for (int i = 0; i < messagesEach; ++i) {
                VEK_LOG(logger, INFO, p << ' ' << i);
            }
        }));
    }
}

TEST(ManyThreads, LoseAndDoubleNothingAndKeepTheirOrderOnOneLogger) {
    Manager manager;
    LogCapture capture(manager);
    manager.start();
    logFromManyThreads(manager, true);
    manager.shutdown();
    expectAllInOrder(capture.messages());
}

TEST(ManyThreads, LoseAndDoubleNothingAndKeepTheirOrderOnLoggersOfTheirOwn) {
    Manager manager;
    LogCapture capture(manager);
    manager.start();
    logFromManyThreads(manager, false);
    manager.shutdown();
    expectAllInOrder(capture.messages());
}

TEST(ManyThreads, MayManageSinksAndLevelsMeanwhile) {
    Manager manager;
    LogCapture capture(manager);
    manager.start();
    std::atomic<bool> stop = false;
    {
        ScopedThread meddler([&] {
            for (int i = 0; !stop; ++i) {
                LogCapture visitor(manager, static_cast<Level>(i % 8));
                manager.setDefaultLevel(i % 2 == 0 ? INFO : TRACE);
                manager.setLoggerLevel("x", i % 2 == 0 ? DEFAULT : DEBUG);
                manager.getLogger(std::to_string(i % 100));
                manager.listLoggers();
                manager.onFork();
            }
        });
        logFromManyThreads(manager, true);
        stop = true;
    }
    manager.shutdown();
    expectAllInOrder(capture.messages());
}

TEST(ManyThreads, MayStillLogWhenTheManagerIsShutDown) {
    for (int round = 0; round < 10; ++round) {
        Manager manager;
        LogCapture capture(manager);
        manager.start();
        std::atomic<bool> stop = false;
        {
            std::vector<std::unique_ptr<ScopedThread>> threads;
            for (int p = 0; p < 4; ++p) {
                // Here and not in the thread, which might run after the shutdown: a new logger
                // would let it fill the queue.
                Logger& logger = *manager.getLogger(p < 2 ? "shared" : std::to_string(p));
                threads.push_back(std::make_unique<ScopedThread>([&logger, &stop, p] {
                    for (int i = 0; !stop; ++i) {
                        VEK_LOG(logger, INFO, p << ' ' << i);
                    }
                }));
            }
            ASSERT_TRUE(capture.waitFor(100));
            manager.shutdown();
            stop = true;
        }
        // Each thread's messages are there from the first to some last one.
        std::map<std::string, int> next;
        for (const vek_test::Captured& message : capture.messages()) {
            std::istringstream text(message.text);
            std::string thread;
            int number = -1;
            text >> thread >> number;
            ASSERT_EQ(number, next[thread]++);
        }
    }
}

TEST(ManyThreads, StatementInTheMidstOfAShutdownDoesNoHarm) {
    Manager manager;
    LogCapture capture(manager);
    manager.start();
    Logger& logger = *manager.getLogger("x");
    Door inside;
    Door goOn;
    ScopedThread late([&] { VEK_LOG(logger, INFO, "late " << (inside.open(), goOn.pass())); });
    ASSERT_TRUE(inside.pass());
    manager.shutdown();
    goOn.open();
    late.join();
    // It has missed the sinks, and the next one finds the logger muted.
    bool evaluated = false;
    VEK_LOG(logger, ERR, (evaluated = true));
    EXPECT_FALSE(evaluated);
    EXPECT_TRUE(capture.texts().empty());
}

}  // namespace
