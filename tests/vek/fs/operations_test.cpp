#include "vek/fs/operations.h"

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "tests/support/thrown.h"
#include "tests/vek/temporary_directory.h"
#include "vek/exception.h"

namespace {

using vek::fs::exists;
using vek::fs::removeIfExists;
using vek::test::codeThrownBy;
using vek::test::textThrownBy;

constexpr std::uint32_t invalidName = ERROR_INVALID_NAME;

class OperationsTest : public vek::test::TemporaryDirectoryTest {
  protected:
    OperationsTest() {
        writeFile("file", "12345");
        CreateDirectoryA(path("dir").c_str(), nullptr);
    }

    bool isThere(const std::string& name) const {
        return GetFileAttributesA(path(name).c_str()) != INVALID_FILE_ATTRIBUTES;
    }
};

TEST_F(OperationsTest, ExistsForFilesAndDirectories) {
    EXPECT_TRUE(vek::fs::exists(path("file")));
    EXPECT_TRUE(vek::fs::exists(path("dir")));
    EXPECT_TRUE(vek::fs::exists(path("f*")));
}

TEST_F(OperationsTest, ExistsIsFalseForErrors2And3) {
    EXPECT_FALSE(vek::fs::exists(path("none")));
    EXPECT_FALSE(vek::fs::exists(path("none\\none")));
    EXPECT_FALSE(vek::fs::exists(path("x*")));
    EXPECT_FALSE(vek::fs::exists(""));
    EXPECT_FALSE(vek::fs::exists(path("dir\\")));
    EXPECT_FALSE(vek::fs::exists("C:\\"));
}

TEST_F(OperationsTest, ExistsThrowsOtherErrors) {
    EXPECT_EQ(codeThrownBy<vek::FsError>([] { vek::fs::exists("*\\x"); }), invalidName);
}

TEST_F(OperationsTest, StatTellsOfFilesAndDirectories) {
    const vek::fs::Stat file = vek::fs::stat(path("file"), true);
    EXPECT_FALSE(file.isDirectory());
    EXPECT_EQ(file.nFileSizeLow, 5u);
    EXPECT_EQ(vek::fs::stat(path("file"), false).nFileIndexLow, file.nFileIndexLow);
    EXPECT_TRUE(vek::fs::stat(path("dir")).isDirectory());
    EXPECT_TRUE(vek::fs::stat(path("dir\\")).isDirectory());
    EXPECT_TRUE(vek::fs::stat("C:\\").isDirectory());
}

TEST_F(OperationsTest, StatNeedsNoAccessToTheFile) {
    const HANDLE held = CreateFileA(path("file").c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    EXPECT_EQ(vek::fs::stat(path("file")).nFileSizeLow, 5u);
    CloseHandle(held);
}

TEST_F(OperationsTest, StatThrowsByWhatFailed) {
    EXPECT_EQ(codeThrownBy<vek::NoSuchFileError>([&] { vek::fs::stat(path("none")); }), 2u);
    EXPECT_EQ(codeThrownBy<vek::NoSuchFileError>([&] { vek::fs::stat(path("none\\none")); }), 3u);
    EXPECT_THROW(vek::fs::stat(path("none")), vek::FsError);
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { vek::fs::stat(path("*")); }), invalidName);
    EXPECT_THROW(vek::fs::stat("nul"), vek::OsError);
}

TEST_F(OperationsTest, RegularFileIsNeitherDirectoryNorDevice) {
    EXPECT_TRUE(vek::fs::isRegularFile(path("file")));
    SetFileAttributesA(path("file").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(vek::fs::isRegularFile(path("file")));
    SetFileAttributesA(path("file").c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_FALSE(vek::fs::isRegularFile(path("dir")));
    EXPECT_FALSE(vek::fs::isRegularFile("nul"));
}

TEST_F(OperationsTest, NothingThatCantBeFoundOutIsARegularFile) {
    EXPECT_FALSE(vek::fs::isRegularFile(path("none")));
    EXPECT_FALSE(vek::fs::isRegularFile(path("*")));
    EXPECT_FALSE(vek::fs::isRegularFile(""));
    EXPECT_FALSE(vek::fs::isRegularFile(path("file") + std::string(1, '\0')));
}

TEST_F(OperationsTest, RemoveFileRemovesFilesOnly) {
    vek::fs::removeFile(path("file"));
    EXPECT_FALSE(isThere("file"));
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { vek::fs::removeFile(path("file")); }), 2u);
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { vek::fs::removeFile(path("dir")); }), 5u);
    EXPECT_TRUE(isThere("dir"));
}

TEST_F(OperationsTest, ReadOnlyFileIsNotRemoved) {
    SetFileAttributesA(path("file").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { vek::fs::removeFile(path("file")); }), 5u);
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { vek::fs::remove(path("file")); }), 5u);
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { vek::fs::removeIfExists(path("file")); }), 5u);
    EXPECT_TRUE(isThere("file"));
    SetFileAttributesA(path("file").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(OperationsTest, RemoveDirectoryRemovesEmptyDirectoriesOnly) {
    writeFile("dir\\x", "");
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { vek::fs::removeDirectory(path("dir")); }),
              static_cast<std::uint32_t>(ERROR_DIR_NOT_EMPTY));
    vek::fs::removeFile(path("dir\\x"));
    vek::fs::removeDirectory(path("dir"));
    EXPECT_FALSE(isThere("dir"));
    EXPECT_THROW(vek::fs::removeDirectory(path("file")), vek::FsError);
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { vek::fs::removeDirectory(path("dir")); }), 2u);
}

TEST_F(OperationsTest, RemoveRemovesEither) {
    vek::fs::remove(path("file"));
    vek::fs::remove(path("dir"));
    EXPECT_FALSE(isThere("file"));
    EXPECT_FALSE(isThere("dir"));
    EXPECT_THROW(vek::fs::remove(path("file")), vek::FsError);
}

TEST_F(OperationsTest, RemoveIfExistsTellsWhetherThereWasAnything) {
    EXPECT_TRUE(vek::fs::removeIfExists(path("file")));
    EXPECT_FALSE(vek::fs::removeIfExists(path("file")));
    EXPECT_TRUE(vek::fs::removeIfExists(path("dir")));
    EXPECT_FALSE(vek::fs::removeIfExists(path("dir")));
    EXPECT_FALSE(vek::fs::removeIfExists(path("none\\none")));
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { vek::fs::removeIfExists(path("*")); }), invalidName);
}

TEST_F(OperationsTest, CreateDirectoryMakesOne) {
    vek::fs::createDirectory(path("new"));
    EXPECT_TRUE(vek::fs::stat(path("new")).isDirectory());
}

TEST_F(OperationsTest, CreateDirectoryThrowsByTheError) {
    EXPECT_EQ(codeThrownBy<vek::FileExistsError>([&] { vek::fs::createDirectory(path("dir")); }),
              183u);
    EXPECT_EQ(codeThrownBy<vek::FileExistsError>([&] { vek::fs::createDirectory(path("file")); }),
              183u);
    EXPECT_EQ(
        codeThrownBy<vek::NoSuchFileError>([&] { vek::fs::createDirectory(path("none\\new")); }),
        3u);
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { vek::fs::createDirectory(path("a|b")); }),
              invalidName);
}

TEST(Links, DontExistHere) {
    EXPECT_EQ(textThrownBy<vek::UsageError>([] { vek::fs::readLink("x"); }),
              "Usage error: readlink not available on Win32");
    EXPECT_EQ(textThrownBy<vek::UsageError>([] { vek::fs::createSymlink("x", "y"); }),
              "Usage error: symlink not available on Win32");
}

TEST(PermissionsAndOwner, AreNotImplemented) {
    EXPECT_EQ(textThrownBy<vek::RuntimeError>([] { vek::fs::setPermissions("x", 0644); }),
              "not implemented");
    EXPECT_EQ(textThrownBy<vek::RuntimeError>([] { vek::fs::setOwner("x", 0, 0); }),
              "not implemented");
}

TEST_F(OperationsTest, TwoThreadsMayRemoveTheSameFilesIfTheyExist) {
    std::atomic<int> failed = 0;
    for (int round = 0; round < 200; ++round) {
        writeFile("x", "");
        std::atomic<int> ready = 0;
        const auto removal = [&] {
            ++ready;
            while (ready < 2) {
            }
            try {
                removeIfExists(path("x"));
            } catch (const vek::Exception& error) {
                ++failed;
                ADD_FAILURE() << error.what();
            }
        };
        std::thread first(removal);
        std::thread second(removal);
        first.join();
        second.join();
        EXPECT_FALSE(exists(path("x")));
    }
    EXPECT_EQ(failed, 0);
}

TEST_F(OperationsTest, RemoveIfExistsPassesOtherErrorsOn) {
    writeFile("read-only", "");
    SetFileAttributesA(path("read-only").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { removeIfExists(path("read-only")); }), 5u);
    SetFileAttributesA(path("read-only").c_str(), FILE_ATTRIBUTE_NORMAL);
    vek::fs::createDirectory(path("full"));
    writeFile("full\\x", "");
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { removeIfExists(path("full")); }),
              static_cast<std::uint32_t>(ERROR_DIR_NOT_EMPTY));
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { removeIfExists(path("a|b")); }),
              static_cast<std::uint32_t>(ERROR_INVALID_NAME));
}

}  // namespace
