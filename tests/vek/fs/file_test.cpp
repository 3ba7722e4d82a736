#include "vek/fs/file.h"

#include <gtest/gtest.h>

#include "tests/vek/temporary_directory.h"
#include "vek/exception.h"
#include "vek/fs/program_path.h"
#include "vek/fs/stream_file.h"

namespace {

using vek::fs::Access;
using vek::fs::File;
using vek::fs::StreamFile;

// The error number of what `f` throws, which must be exactly an `Expected`; 0 and a failure
// otherwise.
template <class Expected, class F>
std::uint32_t codeThrownBy(F f) {
    try {
        f();
    } catch (const vek::FsError& error) {
        EXPECT_EQ(typeid(error), typeid(Expected)) << error.what();
        return error.osError().code();
    }
    ADD_FAILURE() << "nothing thrown";
    return 0;
}

class FileTest : public vek::test::TemporaryDirectoryTest {};

TEST_F(FileTest, MissingFileAndMissingDirectoryAreNoSuchFile) {
    File file;
    EXPECT_EQ(codeThrownBy<vek::NoSuchFileError>([&] { file.open(path("x"), Access::read); }), 2u);
    EXPECT_EQ(codeThrownBy<vek::NoSuchFileError>([&] { file.open(path("no\\x"), Access::read); }),
              3u);
    EXPECT_FALSE(file.isOpen());
}

TEST_F(FileTest, DirectoryIsRefusedAccess) {
    File file;
    EXPECT_EQ(codeThrownBy<vek::FileAccessError>([&] { file.open(path(), Access::read); }), 5u);
}

TEST_F(FileTest, AnyOtherFailureIsAnFsError) {
    File file;
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { file.open("C:\\<bad>|name", Access::read); }),
              static_cast<std::uint32_t>(ERROR_INVALID_NAME));
}

TEST_F(FileTest, FlagsChooseTheDispositionInTheirOrder) {
    File file;
    file.open(path("x"), Access::write, vek::fs::createIfMissing);
    writeFile("x", "text");
    file.open(path("x"), Access::write, vek::fs::createIfMissing);
    file.close();
    EXPECT_EQ(readFile("x"), "text");
    EXPECT_EQ(codeThrownBy<vek::FsError>(
                  [&] { file.open(path("x"), Access::write, vek::fs::mustBeNew); }),
              static_cast<std::uint32_t>(ERROR_FILE_EXISTS));
    // "Must be new" wins over "replace".
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] {
                  file.open(path("x"), Access::write, vek::fs::mustBeNew | vek::fs::replace);
              }),
              static_cast<std::uint32_t>(ERROR_FILE_EXISTS));
    file.open(path("x"), Access::write, vek::fs::replace | vek::fs::createIfMissing);
    file.close();
    EXPECT_EQ(readFile("x"), "");
}

TEST_F(FileTest, OpenFileCanBeReadRenamedAndDeletedByOthers) {
    writeFile("x", "text");
    File file;
    file.open(path("x"), Access::readWrite);
    EXPECT_EQ(readFile("x"), "text");
    EXPECT_NE(MoveFileA(path("x").c_str(), path("y").c_str()), 0);
    EXPECT_NE(DeleteFileA(path("y").c_str()), 0);
}

TEST_F(FileTest, OpeningAgainClosesTheFirst) {
    writeFile("x", "");
    File file;
    file.open(path("x"), Access::read);
    EXPECT_THROW(file.open(path("none"), Access::read), vek::NoSuchFileError);
    EXPECT_FALSE(file.isOpen());
    // Nobody holds the first file any more, so it can be had alone.
    const HANDLE sole =
        CreateFileA(path("x").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(sole, INVALID_HANDLE_VALUE);
    CloseHandle(sole);
}

TEST_F(FileTest, HandleIsNotInherited) {
    writeFile("x", "");
    File file;
    file.open(path("x"), Access::read);
    DWORD flags = HANDLE_FLAG_INHERIT;
    ASSERT_NE(GetHandleInformation(file.nativeHandle(), &flags), 0);
    EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, 0u);
}

TEST_F(FileTest, FailedCloseThrowsAndLeavesItClosed) {
    writeFile("x", "");
    File file;
    file.open(path("x"), Access::read);
    CloseHandle(file.nativeHandle());
    try {
        file.close();
        ADD_FAILURE();
    } catch (const vek::OsError& error) {
        EXPECT_EQ(error.code(), static_cast<std::uint32_t>(ERROR_INVALID_HANDLE));
    }
    EXPECT_FALSE(file.isOpen());
    EXPECT_NO_THROW(file.close());
}

TEST_F(FileTest, FailedCloseInTheDestructorIsReportedOnly) {
    writeFile("x", "");
    testing::internal::CaptureStderr();
    {
        File file;
        file.open(path("x"), Access::read);
        CloseHandle(file.nativeHandle());
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error closing file:" + vek::OsError(ERROR_INVALID_HANDLE).printableText());
}

TEST_F(FileTest, StreamReadsInPiecesToTheEnd) {
    writeFile("x", "abcde");
    StreamFile file;
    file.open(path("x"), Access::read);
    char buffer[3] = {};
    EXPECT_EQ(file.read(buffer, 3), 3u);
    EXPECT_EQ(std::string(buffer, 3), "abc");
    EXPECT_EQ(file.read(buffer, 3), 2u);
    EXPECT_EQ(file.read(buffer, 3), 0u);
}

TEST_F(FileTest, StreamWritesAndFlushes) {
    StreamFile file;
    file.open(path("x"), Access::write, vek::fs::mustBeNew);
    EXPECT_EQ(file.write("abc", 3), 3u);
    EXPECT_TRUE(file.flush());
    file.close();
    EXPECT_EQ(readFile("x"), "abc");
}

TEST_F(FileTest, StreamThrowsWhatTheSystemRefuses) {
    writeFile("x", "abc");
    StreamFile file;
    file.open(path("x"), Access::read);
    EXPECT_THROW(file.write("x", 1), vek::OsError);
    file.open(path("x"), Access::write);
    char buffer[1];
    EXPECT_THROW(file.read(buffer, 1), vek::OsError);
}

// Takes over a handle, as the ends of a pipe are taken over.
class AdoptedFile : public StreamFile {
  public:
    explicit AdoptedFile(HANDLE adopted) { handle = adopted; }
};

TEST_F(FileTest, PipeWhoseWriterHasClosedIsAtItsEnd) {
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    ASSERT_NE(CreatePipe(&readEnd, &writeEnd, nullptr, 0), 0);
    CloseHandle(writeEnd);
    AdoptedFile file(readEnd);
    char buffer[1];
    EXPECT_EQ(file.read(buffer, 1), 0u);
}

TEST_F(FileTest, ClosedStreamCantBeFlushed) {
    EXPECT_FALSE(StreamFile().flush());
}

TEST(ProgramDirectory, IsWhereThisProgramStands) {
    char module[260] = {};
    GetModuleFileNameA(nullptr, module, sizeof module);
    const std::string directory = vek::programDirectory();
    const std::string name = module;
    EXPECT_EQ(directory, name.substr(0, name.rfind('\\')));
}

}  // namespace
