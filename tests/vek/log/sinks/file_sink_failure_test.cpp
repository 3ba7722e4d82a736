// Rotations that fail, and files that can't be written to any more.
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/open_handles.h"
#include "tests/vek/log/captured_errors.h"
#include "tests/vek/log/sinks/file_sink_fixture.h"
#include "vek/base/os_error_text.h"
#include "vek/exception.h"
#include "vek/log/sinks/file_sink.h"
#include "vek/time/clock.h"

namespace {

using namespace vek::log;
using vek::test::CapturedErrors;
using vek::test::HeldFile;
using vek::test::Names;
using vek::test::shareNothing;
using vek::time::MonotonicClock;

class FileSinkFailureTest : public vek::test::FileSinkTest {
  protected:
    // Rotates at each hundredth message, so that the first rotation follows the line "99".
    FileSinkConfig rotatingEachHundred() const {
        writeFile("x.log", std::string(1023, 'x') + "\n");
        return settings();
    }

    // What `x.log` contains before the lines of the tests.
    static std::string ahead() { return std::string(1023, 'x') + "\n"; }

    // The report of a rotation that failed for a move from `from` to `to` in the directory.
    std::string reportOfMove(const std::string& from, const std::string& to,
                             std::uint32_t error) const {
        return signature() + ": Logfile rotation failed: Error while moving " + path(from) +
               " -> " + path(to) + ": " + vek::FsError(path(from), error).what() + "\n";
    }

    // That of `store`, as the compilers spell it.
    static std::string signature() {
#ifdef _MSC_VER
        return "void __cdecl vek::log::FileSink::store(const class vek::log::Message &)";
#else
        return "virtual void vek::log::FileSink::store(const vek::log::Message&)";
#endif
    }
};

TEST_F(FileSinkFailureTest, ArchiverThatHoldsAnArchiveIsReportedAndCostsNoLine) {
    FileSink sink(rotatingEachHundred());
    writeArchives({"x.log.old.1", "x.log.old.2"});
    {
        const HeldFile archiver(path("x.log.old.1"), shareNothing);
        const CapturedErrors errors;
        storeMany(sink, 99);
        EXPECT_EQ(errors.text(), "");
        store(sink, "99");
        EXPECT_EQ(errors.text(), reportOfMove("x.log.old.1", "x.log.old.2", 32));
        EXPECT_EQ(errors.flushedText(), errors.text());
        // What could be moved has been; the file goes on growing.
        EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1", "x.log.old.3"}));
        EXPECT_EQ(readFile("x.log"), ahead() + lines(100));
        storeMany(sink, 50, 100);
        EXPECT_TRUE(sink.isGood());
        EXPECT_TRUE(configOf(sink).enabled);
        EXPECT_EQ(readFile("x.log"), ahead() + lines(150));
    }
    // The next test of the size tries again.
    const CapturedErrors errors;
    storeMany(sink, 49, 150);
    EXPECT_EQ(readFile("x.log"), ahead() + lines(199));
    store(sink, "199");
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(readFile("x.log"), "");
    EXPECT_EQ(readFile("x.log.old.1"), ahead() + lines(200));
    EXPECT_EQ(readFile("x.log.old.2"), "x.log.old.1");
    EXPECT_EQ(readFile("x.log.old.3"), "x.log.old.2");
}

TEST_F(FileSinkFailureTest, FailureIsReportedAgainAtEachTry) {
    FileSink sink(rotatingEachHundred());
    writeArchives({"x.log.old.1"});
    const HeldFile archiver(path("x.log.old.1"), shareNothing);
    const CapturedErrors errors;
    storeMany(sink, 200);
    const std::string report = reportOfMove("x.log.old.1", "x.log.old.2", 32);
    EXPECT_EQ(errors.text(), report + report);
    EXPECT_EQ(readFile("x.log"), ahead() + lines(200));
}

TEST_F(FileSinkFailureTest, OldestArchiveThatIsHeldCannotBeRemoved) {
    FileSinkConfig config = rotatingEachHundred();
    config.max_archives = 1;
    FileSink sink(config);
    writeArchives({"x.log.old.1"});
    const HeldFile archiver(path("x.log.old.1"), shareNothing);
    const CapturedErrors errors;
    storeMany(sink, 100);
    const std::string begin = signature() + ": Logfile rotation failed: ";
    EXPECT_EQ(errors.text(), begin + vek::FsError(path("x.log.old.1"), 32).what() + "\n");
    EXPECT_EQ(readFile("x.log"), ahead() + lines(100));
}

TEST_F(FileSinkFailureTest, ReaderThatLetsNobodyRenameTheFileStopsItsRotation) {
    FileSink sink(rotatingEachHundred());
    {
        HeldFile reader(path("x.log"), FILE_SHARE_READ | FILE_SHARE_WRITE);
        const CapturedErrors errors;
        storeMany(sink, 100);
        EXPECT_EQ(errors.text(), reportOfMove("x.log", "x.log.old.1", 32));
        store(sink, "100");
        EXPECT_EQ(reader.readOn(), ahead() + lines(101));
    }
    storeMany(sink, 99, 101);
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1"}));
    EXPECT_EQ(readFile("x.log.old.1"), ahead() + lines(200));
}

// The system's stamp of the last change to `path`, its name included.
std::int64_t changeTimeOf(const std::string& path) {
    const HANDLE file = CreateFileA(path.c_str(), FILE_READ_ATTRIBUTES, vek::test::shareAll,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    FILE_BASIC_INFO info = {};
    EXPECT_NE(GetFileInformationByHandleEx(file, FileBasicInfo, &info, sizeof info), 0);
    CloseHandle(file);
    return info.ChangeTime.QuadPart;
}

TEST_F(FileSinkFailureTest, LaterAttemptsLeaveTheArchivesAloneWhileAReaderHoldsTheFile) {
    FileSinkConfig config = rotatingEachHundred();
    config.max_archives = 4;
    FileSink sink(config);
    writeArchives({"x.log.old.1", "x.log.old.2", "x.log.old.4", "x.log.old.7"});
    {
        const HeldFile reader(path("x.log"), FILE_SHARE_READ | FILE_SHARE_WRITE);
        const CapturedErrors errors;
        storeMany(sink, 100);
        const std::string report = reportOfMove("x.log", "x.log.old.1", 32);
        EXPECT_EQ(errors.text(), report);
        const Names shifted{"x.log", "x.log.old.2", "x.log.old.3", "x.log.old.4"};
        EXPECT_EQ(names(), shifted);
        const std::int64_t before = changeTimeOf(path("x.log.old.3"));
        // Longer than the stamp's grain.
        Sleep(50);
        storeMany(sink, 100, 100);
        EXPECT_EQ(errors.text(), report + report);
        EXPECT_EQ(names(), shifted);
        EXPECT_EQ(changeTimeOf(path("x.log.old.3")), before);
        // One that has gone meanwhile is made up for.
        ASSERT_NE(DeleteFileA(path("x.log.old.3").c_str()), 0);
        storeMany(sink, 100, 200);
        EXPECT_EQ(names(), (Names{"x.log", "x.log.old.2", "x.log.old.3"}));
        EXPECT_EQ(readFile("x.log.old.3"), "x.log.old.4");
    }
    storeMany(sink, 100, 300);
    EXPECT_EQ(readFile("x.log.old.1"), ahead() + lines(400));
    EXPECT_EQ(readFile("x.log.old.2"), "x.log.old.1");
    EXPECT_EQ(readFile("x.log.old.3"), "x.log.old.4");
}

TEST_F(FileSinkFailureTest, TargetThatExistsIsNotReplaced) {
    FileSink sink(rotatingEachHundred());
    // No archive by its letters, but in the way of one.
    writeArchives({"x.log.OLD.1"});
    const CapturedErrors errors;
    storeMany(sink, 100);
    EXPECT_EQ(errors.text(), reportOfMove("x.log", "x.log.old.1", 183));
    EXPECT_EQ(readFile("x.log.OLD.1"), "x.log.OLD.1");
    EXPECT_EQ(readFile("x.log"), ahead() + lines(100));
    ASSERT_NE(DeleteFileA(path("x.log.OLD.1").c_str()), 0);
    storeMany(sink, 100, 100);
    EXPECT_EQ(readFile("x.log.old.1"), ahead() + lines(200));
}

TEST_F(FileSinkFailureTest, ArchiveZeroIsInTheWayOfArchiveOne) {
    FileSink sink(rotatingEachHundred());
    writeArchives({"x.log.old.0", "x.log.old.1"});
    const CapturedErrors errors;
    storeMany(sink, 100);
    EXPECT_EQ(errors.text(), reportOfMove("x.log.old.0", "x.log.old.1", 183));
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.0", "x.log.old.1"}));
    EXPECT_EQ(readFile("x.log"), ahead() + lines(100));
}

TEST_F(FileSinkFailureTest, DirectoryNamedLikeAnArchiveIsTreatedAsOne) {
    FileSinkConfig config = rotatingEachHundred();
    config.max_archives = 2;
    FileSink sink(config);
    ASSERT_NE(CreateDirectoryA(path("x.log.old.1").c_str(), nullptr), 0);
    writeFile("x.log.old.1\\file", "");
    CapturedErrors errors;
    storeMany(sink, 100);
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1", "x.log.old.2"}));
    // It can't be deleted as it isn't empty.
    store(sink, std::string(2000, 'x'));
    storeMany(sink, 99);
    EXPECT_EQ(errors.text(), signature() + ": Logfile rotation failed: " +
                                 vek::FsError(path("x.log.old.2"), 145).what() + "\n");
    EXPECT_TRUE(sink.isGood());
}

TEST_F(FileSinkFailureTest, ArchiveNumberBeyond32BitsLeavesAsAnotherException) {
    FileSink sink(rotatingEachHundred());
    writeArchives({"x.log.old.1", "x.log.old.4294967296"});
    const CapturedErrors errors;
    storeMany(sink, 99);
    try {
        store(sink, "99");
        ADD_FAILURE() << "nothing was thrown";
    } catch (const vek::Exception& error) {
        ADD_FAILURE() << error.what();
    } catch (const std::out_of_range&) {
    }
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1", "x.log.old.4294967296"}));
    EXPECT_EQ(readFile("x.log"), ahead() + lines(100)) << "the line was written before";
    EXPECT_THROW(sink.rotate(), std::out_of_range);
}

TEST_F(FileSinkFailureTest, AgeIsCountedAnewAfterAFailureButTheSizeIsNot) {
    FileSinkConfig config = settings();
    config.rotate_interval = 1;
    writeArchives({"x.log.old.1"});
    const HeldFile archiver(path("x.log.old.1"), shareNothing);
    const std::string report = reportOfMove("x.log.old.1", "x.log.old.2", 32);
    const CapturedErrors errors;
    FileSink sink(config);
    Sleep(2100);
    const MonotonicClock start(true);
    store(sink, std::string(2000, 'x'));
    const MonotonicClock failed(true);
    EXPECT_EQ(errors.text(), report);
    // Silent for a whole interval, which is beyond 1 second and so 2.
    for (int messages = 1; errors.text() == report; ++messages) {
        ASSERT_LT(messages, 90);
        Sleep(50);
        const MonotonicClock before(true);
        store(sink, "x");
        if (errors.text() == report) {
            ASSERT_LT(before - failed, 2000);
        } else {
            ASSERT_GE(MonotonicClock(true) - start, 2000);
        }
    }
    EXPECT_EQ(errors.text(), report + report);
    // The hundredth message comes within the interval.
    for (int i = 0; i < 100 && errors.text() == report + report; ++i) {
        store(sink, "x");
    }
    EXPECT_EQ(errors.text(), report + report + report);
}

TEST_F(FileSinkFailureTest, DirectoryThatHasGoneSilencesTheSinkBehindOneReport) {
    ASSERT_NE(CreateDirectoryA(path("dir").c_str(), nullptr), 0);
    FileSinkConfig config = settings();
    config.path = path("dir\\x.log");
    FileSink sink(config);
    store(sink, std::string(2000, 'x'));
    // Its path at least: a directory with open files in it isn't deleted.
    if (MoveFileA(path("dir").c_str(), path("moved").c_str()) == 0) {
        GTEST_SKIP() << "a directory with open files can't be moved here";
    }
    const CapturedErrors errors;
    storeMany(sink, 99);
    const std::string report = signature() + ": Logfile rotation failed: " +
                               vek::FsError(path("dir\\x.log.old.*"), 3).what() + "\n";
    EXPECT_EQ(errors.text(), report);
    EXPECT_FALSE(sink.isGood());
    EXPECT_TRUE(configOf(sink).enabled);
    storeMany(sink, 500);
    EXPECT_FALSE(configOf(sink).enabled);
    EXPECT_EQ(errors.text(), report);
    EXPECT_EQ(names(), (Names{"moved"}));
    EXPECT_EQ(readFile("moved\\x.log"), std::string(2000, 'x') + "\r\n" + lines(99));
}

TEST_F(FileSinkFailureTest, DeletedFileTakesLinesUntilTheNextRotationMakesANewOne) {
    FileSink sink(rotatingEachHundred());
    ASSERT_NE(DeleteFileA(path("x.log").c_str()), 0);
    const CapturedErrors errors;
    storeMany(sink, 100);
    store(sink, "next");
    EXPECT_EQ(names(), (Names{"x.log"}));
    EXPECT_EQ(readFile("x.log"), "next\r\n");
    EXPECT_EQ(errors.text(), "");
}

// A device of the machine that is always full. It is not to be rotated.
TEST_F(FileSinkFailureTest, FullDiskTurnsTheSinkOffForGoodInSilence) {
    FileSinkConfig config = settings();
    config.path = "Z:\\dev\\full";
    config.rotate = false;
    const CapturedErrors errors;
    FileSink sink(config);
    ASSERT_TRUE(sink.isGood());
    store(sink, "1");
    EXPECT_FALSE(sink.isGood());
    EXPECT_TRUE(configOf(sink).enabled) << "the failure is seen at the next message";
    storeMany(sink, 1000);
    EXPECT_FALSE(configOf(sink).enabled);
    EXPECT_FALSE(sink.isGood());
    EXPECT_EQ(errors.text(), "");
}

TEST_F(FileSinkFailureTest, WriteThatFailsOnceTurnsTheSinkOffForGood) {
    FileSinkConfig config = settings();
    config.rotate_size = 1000;
    const auto before = support::openHandles();
    FileSink sink(config);
    std::uintptr_t file = 0;
    for (const std::uintptr_t value : support::openHandles()) {
        if (!before.contains(value)) {
            file = value;
        }
    }
    storeMany(sink, 10);
    const CapturedErrors errors;
    ASSERT_NE(CloseHandle(reinterpret_cast<HANDLE>(file)), 0);
    store(sink, "lost");
    EXPECT_FALSE(sink.isGood());
    // The file could be written to, and rotation would open it anew.
    storeMany(sink, 1000);
    EXPECT_FALSE(configOf(sink).enabled);
    EXPECT_FALSE(sink.needsRotation());
    EXPECT_EQ(names(), (Names{"x.log"}));
    EXPECT_EQ(readFile("x.log"), lines(10));
    EXPECT_EQ(errors.text(), "");
}

}  // namespace
