#include "vek/log/sinks/file_sink.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/vek/fs/open_files.h"
#include "tests/vek/log/captured_errors.h"
#include "tests/vek/log/sinks/file_sink_fixture.h"

namespace {

using namespace vek::log;
using vek::test::CapturedErrors;
using vek::test::FileSinkTest;
using vek::test::isClosed;
using vek::test::Names;
using vek::test::SampleAttrMessage;
using vek::test::SampleMessage;

TEST_F(FileSinkTest, ZeroNumbersAreReplacedByTheDefaults) {
    const FileSink sink(path("x.log"));
    EXPECT_EQ(configOf(sink).max_archives, 3u);
    EXPECT_EQ(configOf(sink).rotate_size, 5120u);
    EXPECT_EQ(configOf(sink).rotate_interval, 604800u);
    std::ostringstream text;
    text << configOf(sink);
    EXPECT_EQ(text.str(), "path: " + path("x.log") +
                              "\nrotate: 0\nmax_archives: 3\nrotate_size: 5120 kb\n"
                              "rotate_interval: 604800 s\ncompress_archives: 1");
}

TEST_F(FileSinkTest, OtherNumbersStay) {
    FileSinkConfig config = settings();
    config.max_archives = 1;
    config.rotate_size = 2;
    config.rotate_interval = 4;
    const FileSink sink(config);
    EXPECT_EQ(configOf(sink).max_archives, 1u);
    EXPECT_EQ(configOf(sink).rotate_size, 2u);
    EXPECT_EQ(configOf(sink).rotate_interval, 4u);
    EXPECT_NE(&sink.getConfig(), &config) << "it is a copy";
}

TEST_F(FileSinkTest, PathAloneMeansNewSettingsThatAreEnabled) {
    FileSink sink(path("x.log"));
    EXPECT_TRUE(configOf(sink).enabled);
    EXPECT_FALSE(configOf(sink).rotate);
    EXPECT_TRUE(configOf(sink).compress_archives);
    EXPECT_EQ(configOf(sink).path, path("x.log"));
    EXPECT_EQ(configOf(sink).max_level, INVALID);
    sink.store(SampleMessage(WARN, "a warning"));
    EXPECT_EQ(readFile("x.log").find("PID=4000000001 | TID=4294967295 | "), 0u);
}

TEST_F(FileSinkTest, TypeIsThatOfFiles) {
    const FileSink sink(path("x.log"));
    EXPECT_EQ(sink.type(), 1);
}

// Runs in a process of its own, in which no file sink was made before.
TEST(FileSinkNumberTest, FirstTwoOfAProcessAreFile0AndFile1) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    const auto ids = [] {
        const FileSinkConfig config("not made");
        const FileSink first(config);
        const FileSink second(config);
        std::cerr << first.id() << " " << second.id() << " " << first.id();
        std::exit(0);
    };
    EXPECT_EXIT(ids(), testing::ExitedWithCode(0), "^file#0 file#1 file#0$");
}

TEST_F(FileSinkTest, NumbersGoOnAfterASinkHasGone) {
    std::string before;
    {
        const FileSink sink(settings());
        before = sink.id();
    }
    const FileSink sink(settings());
    ASSERT_EQ(before.substr(0, 5), "file#");
    EXPECT_EQ(sink.id(), "file#" + std::to_string(std::stoi(before.substr(5)) + 1));
}

TEST_F(FileSinkTest, NumbersAreGivenOutOnceAlsoToThreads) {
    constexpr std::size_t threads = 8;
    constexpr std::size_t sinksOfEach = 500;
    std::array<std::set<std::string>, threads> ids;
    {
        std::vector<std::jthread> makers;
        for (std::set<std::string>& own : ids) {
            makers.emplace_back([&own] {
                FileSinkConfig config("not made");
                config.compress_archives = false;
                for (std::size_t i = 0; i < sinksOfEach; ++i) {
                    own.insert(FileSink(config).id());
                }
            });
        }
    }
    std::set<std::string> all;
    for (const std::set<std::string>& own : ids) {
        all.insert(own.begin(), own.end());
    }
    EXPECT_EQ(all.size(), threads * sinksOfEach);
}

TEST_F(FileSinkTest, MakesTheFileAtOnce) {
    const FileSink sink(settings());
    EXPECT_TRUE(sink.isGood());
    EXPECT_EQ(names(), (Names{"x.log"}));
    EXPECT_EQ(readFile("x.log"), "");
}

TEST_F(FileSinkTest, AppendsToWhatTheFileHolds) {
    writeFile("x.log", "before\r\n");
    FileSink sink(settings());
    EXPECT_EQ(readFile("x.log"), "before\r\n");
    store(sink, "behind");
    EXPECT_EQ(readFile("x.log"), "before\r\nbehind\r\n");
}

TEST_F(FileSinkTest, EachMessageStandsInTheFileAtReturn) {
    FileSink sink(settings());
    for (int i = 1; i <= 10; ++i) {
        store(sink, std::to_string(i - 1));
        EXPECT_EQ(readFile("x.log"), lines(i));
    }
}

TEST_F(FileSinkTest, LongMessageArrivesWhole) {
    FileSinkConfig config = settings();
    config.rotate = false;
    FileSink sink(config);
    const std::string text(1000000, 'x');
    store(sink, text);
    EXPECT_TRUE(readFile("x.log") == text + "\r\n");
}

TEST_F(FileSinkTest, LineEndsInTheTextAreThoseOfTheSystemToo) {
    FileSink sink(settings());
    store(sink, "a\nb\n");
    store(sink, "");
    EXPECT_EQ(readFile("x.log"), "a\r\nb\r\n\r\n\r\n");
}

TEST_F(FileSinkTest, EveryByteOfTheTextIsWritten) {
    FileSink sink(settings());
    std::string text;
    for (int byte = 0; byte < 256; ++byte) {
        if (byte != '\n') {
            text += static_cast<char>(byte);
        }
    }
    store(sink, text);
    EXPECT_EQ(readFile("x.log"), text + "\r\n");
}

TEST_F(FileSinkTest, EmptyFormatGivesTheDefaultLayoutByItsFlags) {
    FileSinkConfig config = settings();
    config.format.clear();
    config.print_time = false;
    config.print_tids = false;
    FileSink sink(config);
    sink.store(SampleMessage(WARN, "text"));
    EXPECT_EQ(readFile("x.log"), "PID=4000000001 | [ WARN] tolmarhlp: text\r\n");
}

TEST_F(FileSinkTest, ColoursAreLeftOut) {
    FileSinkConfig config = settings();
    config.format = compileFormat("{color_start}{level}{color_end} {msg}");
    FileSink sink(config);
    sink.store(SampleMessage(ERR, "text"));
    EXPECT_EQ(readFile("x.log"), "  ERR text\r\n");
}

TEST_F(FileSinkTest, AttributesAreRendered) {
    FileSinkConfig config = settings();
    config.format = compileFormat("{msg}{attrs}");
    FileSink sink(config);
    SampleAttrMessage message(INFO, "text");
    message.attrs = {{"b", "2"}, {"a", "1"}};
    sink.store(message);
    Sink& anySink = sink;
    anySink.store(message);
    EXPECT_EQ(readFile("x.log"), "text (a = 1, b = 2)\r\ntext (a = 1, b = 2)\r\n");
}

TEST_F(FileSinkTest, OthersMayReadAppendRenameAndDelete) {
    FileSink sink(settings());
    store(sink, "1");
    EXPECT_EQ(readFile("x.log"), "1\r\n");
    FileSink other(settings());
    store(other, "2");
    store(sink, "3");
    EXPECT_EQ(readFile("x.log"), "1\r\n2\r\n3\r\n");
    EXPECT_NE(MoveFileA(path("x.log").c_str(), path("y.log").c_str()), 0) << GetLastError();
    store(sink, "4");
    EXPECT_EQ(readFile("y.log"), "1\r\n2\r\n3\r\n4\r\n");
    EXPECT_NE(DeleteFileA(path("y.log").c_str()), 0) << GetLastError();
    store(sink, "5");
    EXPECT_TRUE(sink.isGood());
}

TEST_F(FileSinkTest, DestructorClosesTheFileWithoutRotatingIt) {
    FileSinkConfig config = settings();
    writeFile("x.log", std::string(5000, 'x'));
    {
        FileSink sink(config);
        store(sink, "y");
        EXPECT_FALSE(isClosed(path("x.log")));
    }
    EXPECT_TRUE(isClosed(path("x.log")));
    EXPECT_EQ(names(), (Names{"x.log"}));
}

TEST_F(FileSinkTest, FileThatCannotBeOpenedTurnsTheSinkOffAtTheFirstMessageInSilence) {
    FileSinkConfig config = settings();
    config.path = path("no\\x.log");
    const CapturedErrors errors;
    FileSink sink(config);
    EXPECT_FALSE(sink.isGood());
    EXPECT_TRUE(configOf(sink).enabled);
    store(sink, "1");
    EXPECT_FALSE(configOf(sink).enabled);
    // There is no way back.
    ASSERT_NE(CreateDirectoryA(path("no").c_str(), nullptr), 0);
    storeMany(sink, 200);
    EXPECT_FALSE(configOf(sink).enabled);
    EXPECT_EQ(names(), (Names{"no"}));
    EXPECT_TRUE(std::filesystem::is_empty(path("no")));
    EXPECT_EQ(errors.text(), "");
}

TEST_F(FileSinkTest, PathThatNoFileCanHaveTurnsTheSinkOffToo) {
    for (const std::string& bad : {std::string(), path(), path("<x>.log"),
                                   path(std::string("x\0y", 3)), path(std::string(40000, 'x'))}) {
        FileSinkConfig config = settings();
        config.path = bad;
        FileSink sink(config);
        EXPECT_FALSE(sink.isGood());
        store(sink, "1");
        EXPECT_FALSE(configOf(sink).enabled);
    }
    EXPECT_EQ(names(), (Names{}));
}

TEST_F(FileSinkTest, SinkThatIsNotEnabledFailsInItsFirstMessageAndMakesNoFile) {
    FileSinkConfig config = settings();
    config.enabled = false;
    const CapturedErrors errors;
    FileSink sink(config);
    EXPECT_TRUE(sink.isGood());
    store(sink, "1");
    EXPECT_FALSE(sink.isGood());
    storeMany(sink, 200);
    EXPECT_EQ(names(), (Names{}));
    EXPECT_EQ(errors.text(), "");
}

}  // namespace
