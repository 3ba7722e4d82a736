// The file sink in the hands of the manager.
#include <array>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/gzip/gzip_file.h"
#include "tests/vek/log/captured_errors.h"
#include "tests/vek/log/sinks/file_sink_fixture.h"
#include "tests/vek/log/sinks/gzip_programs.h"
#include "vek/base/text.h"
#include "vek/log/manager.h"
#include "vek/log/sinks/file_sink.h"

namespace {

using namespace vek::log;
using support::gunzip;
using vek::test::CapturedErrors;
using vek::test::NamedEvent;
using vek::test::Names;

class FileSinkManagerTest : public vek::test::GzipTest {
  protected:
    static std::size_t sinkCount(const Manager& manager) {
        return manager.withSinks([](const auto& sinks, std::uint32_t) { return sinks.size(); });
    }

    // Whether the log file comes to hold `content` within half a minute.
    bool becomes(const std::string& content) const {
        for (int i = 0; i < 3000 && readFile("x.log") != content; ++i) {
            Sleep(10);
        }
        return readFile("x.log") == content;
    }

    static void logMany(Logger& logger, int count, int first = 0) {
        for (int i = first; i < first + count; ++i) {
            logger.emit(INFO, std::to_string(i));
        }
    }
};

TEST_F(FileSinkManagerTest, StatementsBlockBehindASlowGzipOnlyWhenTheQueueIsFullAndNoneIsLost) {
    constexpr int queued = static_cast<int>(Manager::queueCapacity);
    const NamedEvent started("vek-gzip-started-");
    const NamedEvent goOn("vek-gzip-goes-on-");
    useUnreliableGzip({{"START", started.name}, {"WAIT", goOn.name}});
    constexpr std::size_t limit = 1 << 20;
    writeFile("x.log", std::string(limit, 'x'));
    FileSinkConfig config = compressing();
    config.rotate_size = limit / 1024;
    Manager manager;
    Logger* const logger = manager.getLogger("test");
    manager.addSink(new FileSink(config));
    manager.start();
    logMany(*logger, 100);
    ASSERT_EQ(WaitForSingleObject(started.handle, 30000), WAIT_OBJECT_0);
    logMany(*logger, queued, 100);
    std::atomic<bool> returned = false;
    std::thread oneMore([&] {
        logger->emit(INFO, std::to_string(100 + queued));
        returned = true;
    });
    Sleep(200);
    EXPECT_FALSE(returned) << "the queue was not full";
    EXPECT_EQ(names(), (Names{"x.log.old.1"}));
    SetEvent(goOn.handle);
    oneMore.join();
    manager.shutdown();
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1.gz"}));
    EXPECT_TRUE(gunzip(path("x.log.old.1.gz")) == std::string(limit, 'x') + lines(100));
    EXPECT_TRUE(readFile("x.log") == lines(queued + 1, 100));
}

TEST_F(FileSinkManagerTest, EveryLineOfManyProducersStandsOnceAndInOrderAcrossTheArchives) {
    constexpr int producers = 4;
    constexpr int linesOfEach = 10000;
    FileSinkConfig config = compressing();
    config.max_archives = 1000;
    config.rotate_size = 12;
    {
        Manager manager;
        manager.addSink(new FileSink(config));
        manager.start();
        std::vector<std::jthread> threads;
        for (int producer = 0; producer < producers; ++producer) {
            threads.emplace_back([&manager, producer] {
                Logger* const logger = manager.getLogger(std::to_string(producer));
                for (int i = 0; i < linesOfEach; ++i) {
                    logger->logf(INFO, "%d %d", producer, i);
                }
            });
        }
        threads.clear();
        manager.shutdown();
    }
    const std::size_t archives = names().size() - 1;
    EXPECT_GE(archives, 20u);
    std::string all;
    for (std::size_t number = archives; number > 0; --number) {
        all += gunzip(path("x.log.old." + std::to_string(number) + ".gz"));
    }
    all += readFile("x.log");
    std::vector<std::string> found;
    vek::split(all, '\n', found, true, false);
    ASSERT_EQ(found.size(), static_cast<std::size_t>(producers * linesOfEach));
    std::array<int, producers> next = {};
    for (const std::string& line : found) {
        const std::size_t producer = static_cast<std::size_t>(line[0] - '0');
        ASSERT_LT(producer, next.size()) << line;
        ASSERT_EQ(line, std::to_string(producer) + " " + std::to_string(next[producer]));
        ++next[producer];
    }
}

TEST_F(FileSinkManagerTest, SinkThatCannotRotateStays) {
    writeFile("x.log", std::string(1024, 'x'));
    writeArchives({"x.log.old.0", "x.log.old.1"});
    const CapturedErrors errors;
    Manager manager;
    manager.addSink(new FileSink(settings()));
    manager.start();
    logMany(*manager.getLogger("test"), 150);
    EXPECT_TRUE(becomes(std::string(1024, 'x') + lines(150)));
    EXPECT_EQ(sinkCount(manager), 1u);
    manager.shutdown();
    EXPECT_NE(errors.text().find(": Logfile rotation failed: Error while moving "),
              std::string::npos);
    EXPECT_EQ(errors.text().find("Failed to store message"), std::string::npos);
}

TEST_F(FileSinkManagerTest, SinkThatIsTurnedOffStaysWithoutEffectOnOthers) {
    FileSinkConfig config = settings();
    config.path = path("no\\x.log");
    const CapturedErrors errors;
    Manager manager;
    manager.addSink(new FileSink(config));
    manager.addSink(new FileSink(settings()));
    manager.start();
    logMany(*manager.getLogger("test"), 50);
    EXPECT_TRUE(becomes(lines(50)));
    EXPECT_EQ(sinkCount(manager), 2u);
    manager.shutdown();
    EXPECT_EQ(errors.text(), "");
}

TEST_F(FileSinkManagerTest, ArchiveNumberBeyond32BitsEndsTheWorker) {
    writeFile("x.log", std::string(1024, 'x'));
    writeArchives({"x.log.old.4294967296"});
    const CapturedErrors errors;
    Manager manager;
    manager.addSink(new FileSink(settings()));
    Logger* const logger = manager.getLogger("test");
    manager.start();
    logMany(*logger, 105);
    manager.shutdown();
    EXPECT_EQ(readFile("x.log"), std::string(1024, 'x') + lines(100));
    EXPECT_EQ(errors.text().find("Thread log-manager ("), 0u) << errors.text();
    EXPECT_NE(errors.text().find(" died with std::exception: the number of the archive " +
                                 path("x.log.old.4294967296") + " is too large\n"),
              std::string::npos)
        << errors.text();
}

}  // namespace
