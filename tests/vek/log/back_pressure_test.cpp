// What happens when the manager's queue is full.
#include <atomic>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/vek/log/log_capture.h"
#include "tests/vek/thread/lock_support.h"
#include "vek/exception.h"
#include "vek/log/manager.h"
#include "vek/log/statement.h"

namespace {

using namespace vek::log;
using vek_test::Door;
using vek_test::LogCapture;
using vek_test::ScopedThread;
using Texts = std::vector<std::string>;

// With conditions that count the threads that went to sleep.
class BackPressure : public testing::Test {
  protected:
    bool someoneSleeps() {
        return vek_test::becomesTrue([&] { return sleepCount() != 0; });
    }

    const vek_test::LookedUpIn library{vek_test::watchedLibrary, vek_test::nativeLibrary};
    unsigned(WINAPI* const sleepCount)() =
        vek::resolveFunction<unsigned(WINAPI*)()>(library.conditionLibrary(), "sleepCount");
};

TEST_F(BackPressure, TenThousandStatementsReturnTheNextOneWaitsAndStartFreesIt) {
    Manager manager;
    LogCapture capture(manager);
    Logger& logger = *manager.getLogger("x");
    for (int i = 1; i <= 10000; ++i) {
        VEK_LOG(logger, INFO, i);
    }
    EXPECT_EQ(sleepCount(), 0u);
    std::atomic<bool> returned = false;
    ScopedThread producer([&] {
        VEK_LOG(logger, INFO, 10001);
        returned = true;
    });
    ASSERT_TRUE(someoneSleeps());
    EXPECT_FALSE(returned);
    manager.start();
    producer.join();
    EXPECT_TRUE(returned);
    ASSERT_TRUE(capture.waitFor(10001));
    const Texts texts = capture.texts();
    ASSERT_EQ(texts.size(), 10001u);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        ASSERT_EQ(texts[i], std::to_string(i + 1));
    }
}

TEST_F(BackPressure, ShutdownWithAFullQueueWaitsItsTurnAndLosesNothing) {
    Manager manager;
    Door door;
    LogCapture capture(manager, INVALID, [&](const Message& message) {
        if (message.text == "first") {
            door.pass();
        }
    });
    // Looked up before the worker starts: it holds the manager up while it is held.
    Logger& logger = *manager.getLogger("x");
    logger.emit(INFO, "first");
    for (std::size_t i = 1; i < Manager::queueCapacity; ++i) {
        logger.emit(INFO, "next");
    }
    manager.start();
    // The worker holds the first message in hand, so this one finds the last room.
    logger.emit(INFO, "last");
    const unsigned before = sleepCount();
    ScopedThread stopper([&] { manager.shutdown(); });
    ASSERT_TRUE(vek_test::becomesTrue([&] { return sleepCount() > before; }));
    EXPECT_FALSE(capture.destroyed());
    door.open();
    stopper.join();
    EXPECT_EQ(capture.texts().size(), Manager::queueCapacity + 1);
    EXPECT_EQ(capture.texts().back(), "last");
}

TEST_F(BackPressure, ThreadThatHasFilledTheQueueBehindTheStopMarkIsLetGo) {
    Manager manager;
    Door door;
    LogCapture capture(manager, INVALID, [&](const Message&) { door.pass(); });
    Logger& logger = *manager.getLogger("x");
    logger.emit(INFO, "first");
    manager.start();
    ASSERT_TRUE(door.isReached());
    // The sink is busy, so the loggers can't be muted after the mark yet.
    ScopedThread stopper([&] { manager.shutdown(); });
    Sleep(200);
    const unsigned before = sleepCount();
    std::atomic<bool> returned = false;
    ScopedThread producer([&] {
        for (std::size_t i = 0; i <= Manager::queueCapacity; ++i) {
            logger.emit(INFO, "late");
        }
        returned = true;
    });
    ASSERT_TRUE(vek_test::becomesTrue([&] { return sleepCount() > before; }));
    door.open();
    stopper.join();
    EXPECT_TRUE(vek_test::becomesTrue([&] { return returned.load(); }));
}

TEST_F(BackPressure, WorkerThatHasDiedLeavesTheQueueToFillUp) {
    Manager manager;
    std::atomic<bool> failed = false;
    LogCapture failing(manager, INVALID, [&](const Message&) {
        failed = true;
        throw 42;
    });
    testing::internal::CaptureStderr();
    manager.start();
    Logger& logger = *manager.getLogger("x");
    logger.emit(INFO, "deadly");
    ASSERT_TRUE(
        vek_test::becomesTrue([&] { return failed && vek::thread::Thread::liveCount() == 0; }));
    EXPECT_NE(testing::internal::GetCapturedStderr().find("died with an unknown exception"),
              std::string::npos);
    for (std::size_t i = 0; i < Manager::queueCapacity - 1; ++i) {
        logger.emit(INFO, "kept");
    }
    // There is just the room that the stop mark needs.
    manager.shutdown();
    EXPECT_TRUE(failing.destroyed());
}

}  // namespace
