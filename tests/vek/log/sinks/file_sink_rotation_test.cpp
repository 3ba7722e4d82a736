// What a rotation does to the log file and to the files beside it.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/idle_child.h"
#include "tests/vek/fs/open_files.h"
#include "tests/vek/log/captured_errors.h"
#include "tests/vek/log/sinks/file_sink_fixture.h"
#include "vek/fs/glob.h"
#include "vek/log/sinks/file_sink.h"

namespace {

using vek::log::FileSink;
using vek::log::FileSinkConfig;
using vek::test::CapturedErrors;
using vek::test::HeldFile;
using vek::test::isClosed;
using vek::test::Names;
using vek::test::shareAll;

class FileSinkRotationTest : public vek::test::FileSinkTest {
  protected:
    FileSinkConfig keeping(std::uint32_t archives) const {
        FileSinkConfig config = settings();
        config.max_archives = archives;
        return config;
    }

    // One rotation of a file that holds "log" and a line end.
    void rotateOnce(const FileSinkConfig& config) const {
        FileSink sink(config);
        store(sink, "log");
        sink.rotate();
    }

    // The names in the directory, each followed by the content of its file.
    Names contents() const {
        Names found;
        for (const std::string& name : names()) {
            found.push_back(name + ": " + readFile(name));
        }
        return found;
    }
};

TEST_F(FileSinkRotationTest, LineThatCrossedTheLimitIsTheLastInTheArchive) {
    FileSinkConfig config = settings();
    FileSink sink(config);
    storeMany(sink, 99);
    store(sink, std::string(2000, 'x'));
    EXPECT_EQ(readFile("x.log.old.1"), lines(99) + std::string(2000, 'x') + "\r\n");
    EXPECT_EQ(readFile("x.log"), "");
    store(sink, "next");
    EXPECT_EQ(readFile("x.log"), "next\r\n");
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1"}));
}

TEST_F(FileSinkRotationTest, ArchivesMoveUpUntilTheOldestFallsAway) {
    FileSink sink(keeping(3));
    for (int i = 1; i <= 5; ++i) {
        store(sink, std::to_string(i));
        sink.rotate();
    }
    store(sink, "6");
    EXPECT_EQ(contents(), (Names{"x.log: 6\r\n", "x.log.old.1: 5\r\n", "x.log.old.2: 4\r\n",
                                 "x.log.old.3: 3\r\n"}));
}

TEST_F(FileSinkRotationTest, ByDefaultThreeArchivesStay) {
    FileSink sink(keeping(0));
    for (int i = 1; i <= 5; ++i) {
        sink.rotate();
    }
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1", "x.log.old.2", "x.log.old.3"}));
}

TEST_F(FileSinkRotationTest, OnlyArchiveIsReplacedByTheFile) {
    FileSink sink(keeping(1));
    for (int i = 1; i <= 3; ++i) {
        store(sink, std::to_string(i));
        sink.rotate();
        EXPECT_EQ(contents(), (Names{"x.log: ", "x.log.old.1: " + std::to_string(i) + "\r\n"}));
    }
}

TEST_F(FileSinkRotationTest, GapsInTheNumbersAreClosed) {
    writeArchives({"x.log.old.1", "x.log.old.3", "x.log.old.7"});
    rotateOnce(keeping(10));
    EXPECT_EQ(contents(), (Names{"x.log: ", "x.log.old.1: log\r\n", "x.log.old.2: x.log.old.1",
                                 "x.log.old.3: x.log.old.3", "x.log.old.4: x.log.old.7"}));
}

TEST_F(FileSinkRotationTest, LargestNumberOf32BitsIsBroughtDownToo) {
    writeArchives({"x.log.old.4294967295.gz", "x.log.old.2147483648"});
    rotateOnce(keeping(10));
    EXPECT_EQ(contents(),
              (Names{"x.log: ", "x.log.old.1: log\r\n", "x.log.old.2: x.log.old.2147483648",
                     "x.log.old.3.gz: x.log.old.4294967295.gz"}));
}

TEST_F(FileSinkRotationTest, OrderIsThatOfTheNumbersAlsoBeyondNine) {
    Names archives;
    for (int i = 1; i <= 12; ++i) {
        archives.push_back("x.log.old." + std::to_string(i));
    }
    writeArchives(archives);
    rotateOnce(keeping(13));
    EXPECT_EQ(names().size(), 14u);
    for (int i = 1; i <= 12; ++i) {
        EXPECT_EQ(readFile("x.log.old." + std::to_string(i + 1)), "x.log.old." + std::to_string(i));
    }
}

TEST_F(FileSinkRotationTest, EachArchiveKeepsItsForm) {
    writeArchives({"x.log.old.1.gz", "x.log.old.2", "x.log.old.4.gz"});
    rotateOnce(keeping(10));
    EXPECT_EQ(contents(),
              (Names{"x.log: ", "x.log.old.1: log\r\n", "x.log.old.2.gz: x.log.old.1.gz",
                     "x.log.old.3: x.log.old.2", "x.log.old.4.gz: x.log.old.4.gz"}));
}

TEST_F(FileSinkRotationTest, ForeignFilesAreLeftAlone) {
    const Names foreign = {"x.log.old",    "x.log.old.1.gz.bak", "x.log.old.1.txt", "x.log.old.abc",
                           "x.log.old.gz", "x.log.older.1",      "x.log2.old.1",    "y.log.old.1"};
    writeArchives(foreign);
    FileSink sink(keeping(1));
    sink.rotate();
    sink.rotate();
    for (const std::string& name : foreign) {
        EXPECT_EQ(readFile(name), name);
    }
    EXPECT_EQ(names().size(), foreign.size() + 2);
}

TEST_F(FileSinkRotationTest, ArchivesOfALargerSettingAreCutDown) {
    {
        FileSink sink(keeping(6));
        for (int i = 1; i <= 6; ++i) {
            store(sink, std::to_string(i));
            sink.rotate();
        }
        EXPECT_EQ(names().size(), 7u);
    }
    FileSink sink(keeping(2));
    store(sink, "7");
    EXPECT_EQ(names().size(), 7u) << "not before a rotation";
    sink.rotate();
    EXPECT_EQ(contents(), (Names{"x.log: ", "x.log.old.1: 7\r\n", "x.log.old.2: 6\r\n"}));
}

TEST_F(FileSinkRotationTest, NegativeNumberOfArchivesRemovesNone) {
    writeArchives({"x.log.old.1", "x.log.old.2", "x.log.old.3", "x.log.old.4"});
    rotateOnce(keeping(static_cast<std::uint32_t>(-1)));
    EXPECT_EQ(names().size(), 6u);
    EXPECT_EQ(readFile("x.log.old.5"), "x.log.old.4");
}

TEST_F(FileSinkRotationTest, OfTwoArchivesWithOneNumberTheFirstFoundMovesAndTheOtherStays) {
    writeArchives({"x.log.old.1.gz", "x.log.old.01.gz"});
    const std::string first = vek::fs::glob(path("x.log.old.*"), false).front();
    const std::string moved = first.ends_with("01.gz") ? "x.log.old.01.gz" : "x.log.old.1.gz";
    const std::string left = first.ends_with("01.gz") ? "x.log.old.1.gz" : "x.log.old.01.gz";
    rotateOnce(keeping(5));
    EXPECT_EQ(contents(), (Names{"x.log: ", "x.log.old.1: log\r\n", left + ": " + left,
                                 "x.log.old.2.gz: " + moved}));
}

TEST_F(FileSinkRotationTest, DotsInTheNamesOfDirectoriesDoNoHarm) {
    FileSinkConfig config = keeping(2);
    for (const std::string directory : {"v1.old.2", "a..b.gz", ".old.7", "d.log"}) {
        ASSERT_NE(CreateDirectoryA(path(directory).c_str(), nullptr), 0);
        config.path = path(directory + "\\log");
        FileSink sink(config);
        for (int i = 1; i <= 3; ++i) {
            store(sink, std::to_string(i));
            sink.rotate();
        }
        EXPECT_EQ(readFile(directory + "\\log.old.1"), "3\r\n");
        EXPECT_EQ(readFile(directory + "\\log.old.2"), "2\r\n");
        EXPECT_FALSE(std::filesystem::exists(path(directory + "\\log.old.3")));
    }
    EXPECT_EQ(names(), (Names{".old.7", "a..b.gz", "d.log", "v1.old.2"}));
}

TEST_F(FileSinkRotationTest, SeparatorsOfThePathMayBeSlashes) {
    ASSERT_NE(CreateDirectoryA(path("d").c_str(), nullptr), 0);
    std::string directory = path("d");
    std::replace(directory.begin(), directory.end(), '\\', '/');
    for (const std::string& file :
         {directory + "/x.log", directory + "\\x.log", path("d") + "/x.log"}) {
        FileSinkConfig config = settings();
        config.path = file;
        FileSink sink(config);
        for (int i = 1; i <= 5; ++i) {
            store(sink, std::to_string(i));
            ASSERT_NO_THROW(sink.rotate()) << file;
        }
        EXPECT_EQ(readFile("d\\x.log.old.1"), "5\r\n") << file;
        EXPECT_EQ(readFile("d\\x.log.old.2"), "4\r\n") << file;
        EXPECT_EQ(readFile("d\\x.log.old.3"), "3\r\n") << file;
        EXPECT_EQ(readFile("d\\x.log.old.4"), "") << file;
        EXPECT_EQ(names(), Names{"d"});
    }
}

TEST_F(FileSinkRotationTest, FilesOfTheSameNameInTheCurrentDirectoryAreLeftAlone) {
    ASSERT_NE(CreateDirectoryA(path("d").c_str(), nullptr), 0);
    ASSERT_NE(CreateDirectoryA(path("current").c_str(), nullptr), 0);
    writeFile("current\\x.log.old.2", "foreign");
    writeFile("d\\x.log.old.2", "own");
    char before[MAX_PATH] = {};
    GetCurrentDirectoryA(sizeof before, before);
    FileSinkConfig config = settings();
    config.path = path("d") + "/x.log";
    FileSink sink(config);
    ASSERT_NE(SetCurrentDirectoryA(path("current").c_str()), 0);
    EXPECT_NO_THROW(sink.rotate());
    SetCurrentDirectoryA(before);
    EXPECT_EQ(readFile("current\\x.log.old.2"), "foreign");
    EXPECT_EQ(readFile("d\\x.log.old.2"), "own");
    EXPECT_EQ(readFile("d\\x.log.old.1"), "");
}

TEST_F(FileSinkRotationTest, FileThatHasGoneMakesNoArchiveButTheOthersMoveUp) {
    writeArchives({"x.log.old.1"});
    FileSink sink(keeping(3));
    store(sink, "1");
    ASSERT_NE(DeleteFileA(path("x.log").c_str()), 0);
    const CapturedErrors errors;
    sink.rotate();
    EXPECT_EQ(contents(), (Names{"x.log: ", "x.log.old.2: x.log.old.1"}));
    store(sink, "2");
    sink.rotate();
    EXPECT_EQ(contents(), (Names{"x.log: ", "x.log.old.1: 2\r\n", "x.log.old.2: x.log.old.1"}));
    EXPECT_EQ(errors.text(), "");
}

TEST_F(FileSinkRotationTest, SinkThatIsNotEnabledRotatesAndOpensNothing) {
    writeFile("x.log", "log\r\n");
    FileSinkConfig config = keeping(3);
    config.enabled = false;
    FileSink sink(config);
    sink.rotate();
    EXPECT_EQ(contents(), (Names{"x.log.old.1: log\r\n"}));
    EXPECT_FALSE(sink.isGood()) << "there was nothing to close";
}

TEST_F(FileSinkRotationTest, WorksWhileAnOlderChildLives) {
    FileSink sink(keeping(2));
    store(sink, "1");
    const support::IdleChild child;
    sink.rotate();
    store(sink, "2");
    sink.rotate();
    EXPECT_EQ(contents(), (Names{"x.log: ", "x.log.old.1: 2\r\n", "x.log.old.2: 1\r\n"}));
    EXPECT_TRUE(isClosed(path("x.log.old.1")));
    EXPECT_TRUE(isClosed(path("x.log.old.2")));
    EXPECT_TRUE(child.lives());
}

TEST_F(FileSinkRotationTest, WorksWhileAReaderFollowsTheFile) {
    FileSink sink(keeping(3));
    store(sink, "1");
    HeldFile reader(path("x.log"), shareAll);
    EXPECT_EQ(reader.readOn(), "1\r\n");
    store(sink, "2");
    sink.rotate();
    store(sink, "3");
    EXPECT_EQ(reader.readOn(), "2\r\n") << "it goes on to the end of the archive";
    sink.rotate();
    EXPECT_EQ(reader.readOn(), "");
    EXPECT_EQ(contents(), (Names{"x.log: ", "x.log.old.1: 3\r\n", "x.log.old.2: 1\r\n2\r\n"}));
}

}  // namespace
