// The compression of archives by gzip programs that work, fail, die, are slow or missing.
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "tests/support/gzip/gzip_file.h"
#include "tests/support/open_handles.h"
#include "tests/support/standard_output.h"
#include "tests/vek/log/captured_errors.h"
#include "tests/vek/log/sinks/file_sink_fixture.h"
#include "tests/vek/log/sinks/gzip_programs.h"
#include "tests/vek/thread/lock_support.h"
#include "vek/base/environment.h"
#include "vek/exception.h"
#include "vek/log/sinks/file_sink.h"

namespace {

using namespace vek::log;
using support::gunzip;
using vek::test::CapturedErrors;
using vek::test::NamedEvent;
using vek::test::Names;
using vek::test::unreliableGzip;
using vek::test::workingGzip;

class FileSinkGzipTest : public vek::test::GzipTest {
  protected:
    std::string warning() const {
        return "Warning: failed to compress " + path("x.log.old.1") + " with " + unreliableGzip() +
               "\\gzip.exe";
    }

    // One rotation by a gzip that can't do it, which leaves the archive as it is.
    void expectWarning() const {
        FileSink sink(compressing());
        store(sink, "1");
        const CapturedErrors errors;
        sink.rotate();
        EXPECT_EQ(errors.text(), warning());
        EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1"}));
        EXPECT_EQ(readFile("x.log.old.1"), "1\r\n");
        EXPECT_TRUE(sink.isGood());
    }
};

TEST_F(FileSinkGzipTest, ArchiveIsCompressedWhenItIsMade) {
    FileSink sink(compressing());
    storeMany(sink, 99);
    store(sink, std::string(2000, 'x'));
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1.gz"}));
    EXPECT_EQ(gunzip(path("x.log.old.1.gz")), lines(99) + std::string(2000, 'x') + "\r\n");
    EXPECT_EQ(readFile("x.log"), "");
}

TEST_F(FileSinkGzipTest, CompressedArchivesMoveUpAndFallAwayLikeOthers) {
    FileSink sink(compressing());
    for (int i = 1; i <= 5; ++i) {
        store(sink, std::to_string(i));
        sink.rotate();
    }
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1.gz", "x.log.old.2.gz", "x.log.old.3.gz"}));
    EXPECT_EQ(gunzip(path("x.log.old.1.gz")), "5\r\n");
    EXPECT_EQ(gunzip(path("x.log.old.2.gz")), "4\r\n");
    EXPECT_EQ(gunzip(path("x.log.old.3.gz")), "3\r\n");
}

TEST_F(FileSinkGzipTest, SettingsOfOneRunLeaveTheArchivesOfAnotherAsTheyAre) {
    for (int i = 1; i <= 4; ++i) {
        FileSinkConfig config = compressing();
        config.max_archives = 10;
        config.compress_archives = i % 2 == 0;
        FileSink sink(config);
        store(sink, std::to_string(i));
        sink.rotate();
    }
    EXPECT_EQ(names(),
              (Names{"x.log", "x.log.old.1.gz", "x.log.old.2", "x.log.old.3.gz", "x.log.old.4"}));
    EXPECT_EQ(readFile("x.log.old.4"), "1\r\n");
    EXPECT_EQ(gunzip(path("x.log.old.3.gz")), "2\r\n");
}

TEST_F(FileSinkGzipTest, PathWithBlanksIsOneArgument) {
    ASSERT_NE(CreateDirectoryA(path("a directory").c_str(), nullptr), 0);
    FileSinkConfig config = compressing();
    config.path = path("a directory\\my log");
    FileSink sink(config);
    store(sink, "1");
    sink.rotate();
    EXPECT_EQ(gunzip(path("a directory\\my log.old.1.gz")), "1\r\n");
}

TEST_F(FileSinkGzipTest, GetsTheArchiveAsItsOneArgumentAndTheStreamsOfThisProcess) {
    useUnreliableGzip({{"SAY", "called by"}});
    FileSink sink(compressing());
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    const HANDLE output = CreateFileA(path("output").c_str(), GENERIC_WRITE, vek::test::shareAll,
                                      &inherited, CREATE_NEW, 0, nullptr);
    {
        const support::StandardOutputTo redirection(output);
        sink.rotate();
    }
    CloseHandle(output);
    EXPECT_EQ(readFile("output"), "called by \"" + unreliableGzip() + "\\gzip.exe\" \"" +
                                      path("x.log.old.1") + "\"\r\n");
    EXPECT_EQ(names(), (Names{"output", "x.log", "x.log.old.1.gz"}));
}

TEST_F(FileSinkGzipTest, WithoutOneArchivesStayUncompressedInSilence) {
    const CapturedErrors errors;
    for (const std::string& searched : {path(), std::string()}) {
        vek::setEnv("PATH", searched);
        FileSink sink(compressing());
        sink.rotate();
    }
    vek::unsetEnv("PATH");
    FileSink sink(compressing());
    sink.rotate();
    // Too late: it is looked for at construction.
    vek::setEnv("PATH", workingGzip());
    sink.rotate();
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1", "x.log.old.2", "x.log.old.3"}));
    EXPECT_EQ(errors.text(), "");
}

TEST_F(FileSinkGzipTest, OnASystemWithoutConditionsArchivesStayUncompressedInSilence) {
    const vek_test::LookedUpIn library{vek_test::olderLibrary, vek_test::olderLibrary};
    const CapturedErrors errors;
    FileSink sink(compressing());
    for (int i = 1; i <= 2; ++i) {
        store(sink, std::to_string(i));
        sink.rotate();
    }
    store(sink, "3");
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1", "x.log.old.2"}));
    EXPECT_EQ(readFile("x.log.old.1"), "2\r\n");
    EXPECT_EQ(readFile("x.log"), "3\r\n");
    EXPECT_EQ(errors.text(), "");
}

TEST_F(FileSinkGzipTest, FirstOneOfThePathIsTaken) {
    vek::setEnv("PATH", path() + ";" + unreliableGzip() + ";" + workingGzip());
    vek::setEnv("UNRELIABLE_GZIP_EXIT", "1");
    expectWarning();
}

TEST_F(FileSinkGzipTest, RelativeOneIsFoundAlsoWhenTheCurrentDirectoryHasChanged) {
    // Not below the folder of this program, where the system looks by itself.
    std::filesystem::create_directory(path("bin"));
    std::filesystem::copy_file(workingGzip() + "\\gzip.exe", path("bin\\gzip.exe"));
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(path());
    vek::setEnv("PATH", "bin");
    FileSink sink(compressing());
    std::filesystem::current_path(before);
    EXPECT_NO_THROW(sink.rotate());
    EXPECT_EQ(names(), (Names{"bin", "x.log", "x.log.old.1.gz"}));
}

TEST_F(FileSinkGzipTest, NoneIsRunWithoutCompression) {
    useUnreliableGzip({{"EXIT", "1"}});
    FileSink sink(settings());
    const CapturedErrors errors;
    sink.rotate();
    EXPECT_EQ(errors.text(), "");
}

TEST_F(FileSinkGzipTest, NoneIsRunForAFileThatHasGone) {
    useUnreliableGzip({{"EXIT", "1"}});
    FileSink sink(compressing());
    ASSERT_NE(DeleteFileA(path("x.log").c_str()), 0);
    const CapturedErrors errors;
    sink.rotate();
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(names(), (Names{"x.log"}));
}

TEST_F(FileSinkGzipTest, OneThatFailsIsToldWithoutALineEndAndTheArchiveStays) {
    for (const char* const code : {"1", "2", "259"}) {
        useUnreliableGzip({{"EXIT", code}});
        expectWarning();
        ASSERT_NE(DeleteFileA(path("x.log.old.1").c_str()), 0);
    }
}

TEST_F(FileSinkGzipTest, OneThatIsKilledIsToldLikeOneThatFails) {
    for (const char* const code : {"37125", "9"}) {
        useUnreliableGzip({{"KILL", code}});
        expectWarning();
        ASSERT_NE(DeleteFileA(path("x.log.old.1").c_str()), 0);
    }
}

TEST_F(FileSinkGzipTest, UncompressedArchiveOfAFailureMovesUpAsItIs) {
    useUnreliableGzip({{"EXIT", "1"}});
    expectWarning();
    vek::unsetEnv("UNRELIABLE_GZIP_EXIT");
    FileSink sink(compressing());
    store(sink, "2");
    sink.rotate();
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1.gz", "x.log.old.2"}));
    EXPECT_EQ(readFile("x.log.old.2"), "1\r\n");
}

TEST_F(FileSinkGzipTest, CompressedFileThatExistsIsNotReplaced) {
    // No archive by its letters, but in the way of one.
    writeFile("x.log.OLD.1.gz", "other");
    FileSink sink(compressing());
    store(sink, "1");
    const CapturedErrors errors;
    sink.rotate();
    EXPECT_EQ(errors.text(), "Warning: failed to compress " + path("x.log.old.1") + " with " +
                                 workingGzip() + "\\gzip.exe");
    EXPECT_EQ(readFile("x.log.OLD.1.gz"), "other");
    EXPECT_EQ(readFile("x.log.old.1"), "1\r\n");
}

TEST_F(FileSinkGzipTest, OneThatHasGoneSinceIsAFailedRotationAndCostsNoLine) {
    ASSERT_NE(CreateDirectoryA(path("bin").c_str(), nullptr), 0);
    std::filesystem::copy_file(workingGzip() + "\\gzip.exe", path("bin\\gzip.exe"));
    vek::setEnv("PATH", path("bin"));
    writeFile("x.log", std::string(1024, 'x'));
    FileSink sink(compressing());
    ASSERT_NE(DeleteFileA(path("bin\\gzip.exe").c_str()), 0);
    const CapturedErrors errors;
    storeMany(sink, 100);
    EXPECT_NE(errors.text().find(": Logfile rotation failed: " +
                                 std::string(vek::OsError(ERROR_FILE_NOT_FOUND).what()) + "\n"),
              std::string::npos)
        << errors.text();
    store(sink, "next");
    EXPECT_EQ(names(), (Names{"bin", "x.log", "x.log.old.1"}));
    EXPECT_EQ(readFile("x.log.old.1"), std::string(1024, 'x') + lines(100));
    EXPECT_EQ(readFile("x.log"), "next\r\n");
}

TEST_F(FileSinkGzipTest, OneThatIsNoProgramIsAFailedRotationToo) {
    ASSERT_NE(CreateDirectoryA(path("bin").c_str(), nullptr), 0);
    writeFile("bin\\gzip.exe", "text");
    vek::setEnv("PATH", path("bin"));
    FileSink sink(compressing());
    store(sink, "1");
    EXPECT_THROW(sink.rotate(), vek::OsError);
    EXPECT_EQ(names(), (Names{"bin", "x.log.old.1"}));
}

TEST_F(FileSinkGzipTest, StoreWaitsForASlowOneAndLosesNothing) {
    const NamedEvent started("vek-gzip-started-");
    const NamedEvent goOn("vek-gzip-goes-on-");
    useUnreliableGzip({{"START", started.name}, {"WAIT", goOn.name}});
    writeFile("x.log", std::string(1024, 'x'));
    FileSink sink(compressing());
    storeMany(sink, 99);
    std::atomic<bool> stored = false;
    std::thread worker([&] {
        store(sink, "99");
        stored = true;
        store(sink, "100");
    });
    EXPECT_EQ(WaitForSingleObject(started.handle, 30000), WAIT_OBJECT_0);
    EXPECT_EQ(names(), (Names{"x.log.old.1"})) << "the new file comes behind the compression";
    EXPECT_FALSE(stored);
    SetEvent(goOn.handle);
    worker.join();
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1.gz"}));
    EXPECT_EQ(gunzip(path("x.log.old.1.gz")), std::string(1024, 'x') + lines(100));
    EXPECT_EQ(readFile("x.log"), "100\r\n");
}

TEST_F(FileSinkGzipTest, FileThatCannotBeOpenedBehindTheRotationTurnsTheSinkOffInSilence) {
    const NamedEvent started("vek-gzip-started-");
    const NamedEvent goOn("vek-gzip-goes-on-");
    useUnreliableGzip({{"START", started.name}, {"WAIT", goOn.name}});
    writeFile("x.log", std::string(1024, 'x'));
    FileSink sink(compressing());
    const CapturedErrors errors;
    std::thread worker([&] { storeMany(sink, 100); });
    EXPECT_EQ(WaitForSingleObject(started.handle, 30000), WAIT_OBJECT_0);
    EXPECT_NE(CreateDirectoryA(path("x.log").c_str(), nullptr), 0);
    SetEvent(goOn.handle);
    worker.join();
    EXPECT_FALSE(sink.isGood());
    EXPECT_TRUE(configOf(sink).enabled);
    store(sink, "lost");
    EXPECT_FALSE(configOf(sink).enabled);
    ASSERT_NE(RemoveDirectoryA(path("x.log").c_str()), 0);
    storeMany(sink, 200);
    EXPECT_EQ(names(), (Names{"x.log.old.1.gz"}));
    EXPECT_EQ(errors.text(), "");
}

TEST_F(FileSinkGzipTest, RotationsLeaveNoHandlesBehind) {
    FileSink sink(compressing());
    sink.rotate();  // the first child brings the shepherd
    const auto before = support::openHandles();
    for (int i = 0; i < 20; ++i) {
        store(sink, std::to_string(i));
        sink.rotate();
    }
    EXPECT_EQ(support::openHandles().size(), before.size());
}

}  // namespace
