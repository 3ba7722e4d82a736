#include "vek/fs/file.h"

#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "tests/support/thrown.h"
#include "tests/vek/fs/open_files.h"
#include "tests/vek/temporary_directory.h"
#include "vek/exception.h"
#include "vek/fs/stream_file.h"

namespace {

using vek::fs::Access;
using vek::fs::File;
using vek::fs::StreamFile;
using vek::test::codeThrownBy;
using vek::test::isClosed;

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
    EXPECT_FALSE(isClosed(path("x")));
    EXPECT_THROW(file.open(path("none"), Access::read), vek::NoSuchFileError);
    EXPECT_FALSE(file.isOpen());
    EXPECT_TRUE(isClosed(path("x")));
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

TEST_F(FileTest, AccessIsReadOrWriteOrElseBoth) {
    writeFile("x", "ab");
    char byte = 0;
    StreamFile file;
    for (const std::uint32_t both : {2u, 3u, 0xFFFFFFFFu}) {
        file.open(path("x"), both);
        EXPECT_EQ(file.write("c", 1), 1u);
        EXPECT_EQ(file.read(&byte, 1), 1u);
        EXPECT_EQ(byte, 'b');
    }
    file.open(path("x"), 0);
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { file.write("c", 1); }),
              static_cast<std::uint32_t>(ERROR_ACCESS_DENIED));
    file.open(path("x"), 1);
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { file.read(&byte, 1); }),
              static_cast<std::uint32_t>(ERROR_ACCESS_DENIED));
}

TEST_F(FileTest, NoFollowFlagChangesNothing) {
    writeFile("x", "");
    File file;
    EXPECT_NO_THROW(file.open(path("x"), Access::read, vek::fs::noFollow));
    EXPECT_EQ(codeThrownBy<vek::NoSuchFileError>(
                  [&] { file.open(path("y"), Access::read, vek::fs::noFollow); }),
              2u);
}

TEST_F(FileTest, AttributesMakeANewFileInheritable) {
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, nullptr, TRUE};
    File file;
    file.open(path("x"), Access::write, vek::fs::mustBeNew, &attributes);
    DWORD flags = 0;
    ASSERT_NE(GetHandleInformation(file.nativeHandle(), &flags), 0);
    EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, static_cast<DWORD>(HANDLE_FLAG_INHERIT));
}

TEST_F(FileTest, MovesToANewObject) {
    writeFile("x", "text");
    StreamFile from;
    from.open(path("x"), Access::read);
    const HANDLE handle = from.nativeHandle();
    StreamFile to(std::move(from));
    EXPECT_FALSE(from.isOpen());
    EXPECT_EQ(to.nativeHandle(), handle);
    char byte = 0;
    EXPECT_EQ(to.read(&byte, 1), 1u);
}

TEST_F(FileTest, MoveAssignmentClosesWhatItReplaces) {
    writeFile("x", "");
    writeFile("y", "");
    StreamFile from;
    StreamFile to;
    from.open(path("x"), Access::read);
    to.open(path("y"), Access::read);
    const HANDLE moved = from.nativeHandle();
    to = std::move(from);
    EXPECT_EQ(to.nativeHandle(), moved);
    EXPECT_FALSE(isClosed(path("x")));
    EXPECT_TRUE(isClosed(path("y")));
    EXPECT_FALSE(from.isOpen());
    to = StreamFile();
    EXPECT_FALSE(to.isOpen());
    EXPECT_TRUE(isClosed(path("x")));
}

TEST_F(FileTest, MoveAssignmentToItselfChangesNothing) {
    writeFile("x", "");
    File file;
    file.open(path("x"), Access::read);
    File& same = file;
    file = std::move(same);
    EXPECT_TRUE(same.isOpen());
    EXPECT_FALSE(isClosed(path("x")));
}

TEST_F(FileTest, MoveAssignmentThatCantCloseLeavesTheOtherFileWhereItIs) {
    writeFile("x", "");
    File from;
    File to;
    from.open(path("x"), Access::read);
    to.open(path("x"), Access::read);
    CloseHandle(to.nativeHandle());
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { to = std::move(from); }),
              static_cast<std::uint32_t>(ERROR_INVALID_HANDLE));
    EXPECT_TRUE(from.isOpen());
    EXPECT_FALSE(to.isOpen());
}

TEST_F(FileTest, AdoptsAndReleasesHandles) {
    writeFile("x", "");
    writeFile("y", "");
    File first;
    File second;
    first.open(path("x"), Access::read);
    second.open(path("y"), Access::read);
    const HANDLE adopted = first.release();
    EXPECT_FALSE(first.isOpen());
    second.adopt(adopted);
    EXPECT_TRUE(isClosed(path("y")));
    EXPECT_EQ(second.release(), adopted);
    EXPECT_EQ(second.release(), INVALID_HANDLE_VALUE);
    EXPECT_FALSE(isClosed(path("x")));
    CloseHandle(adopted);
}

// Counts its closes.
class CountingFile : public File {
  public:
    void close() override {
        ++closes;
        File::close();
    }
    int closes = 0;
};

TEST_F(FileTest, OpeningClosesByTheVirtualClose) {
    writeFile("x", "");
    CountingFile file;
    file.open(path("x"), Access::read);
    const int before = file.closes;
    file.open(path("x"), Access::read);
    EXPECT_EQ(file.closes, before + 1);
    File& base = file;
    base = File();
    EXPECT_EQ(file.closes, before + 2);
    EXPECT_FALSE(file.isOpen());
}

TEST_F(FileTest, FailedCloseKeepsOpenFromOpening) {
    writeFile("x", "");
    File file;
    file.open(path("x"), Access::read);
    CloseHandle(file.nativeHandle());
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { file.open(path("x"), Access::read); }),
              static_cast<std::uint32_t>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(file.isOpen());
    EXPECT_NO_THROW(file.open(path("x"), Access::read));
}

TEST_F(FileTest, PathWithAZeroByteIsRefused) {
    writeFile("x", "text");
    const std::string hostile = path("x") + std::string("\0y", 2);
    File file;
    EXPECT_EQ(
        codeThrownBy<vek::FsError>([&] { file.open(hostile, Access::write, vek::fs::replace); }),
        static_cast<std::uint32_t>(ERROR_INVALID_NAME));
    EXPECT_EQ(readFile("x"), "text");
}

TEST_F(FileTest, VeryLongPathIsRefused) {
    File file;
    EXPECT_EQ(codeThrownBy<vek::FsError>(
                  [&] { file.open("C:\\" + std::string(32000, 'a'), Access::read); }),
              static_cast<std::uint32_t>(ERROR_FILENAME_EXCED_RANGE));
}

static_assert(!std::is_copy_constructible_v<File> && !std::is_copy_assignable_v<File>);
static_assert(!std::is_copy_constructible_v<StreamFile> && !std::is_copy_assignable_v<StreamFile>);
static_assert(std::is_nothrow_move_constructible_v<File>);
static_assert(std::is_nothrow_move_constructible_v<StreamFile>);
static_assert(std::is_base_of_v<vek::NoCopy, File>);

}  // namespace
