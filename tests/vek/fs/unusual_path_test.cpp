// What becomes of paths and files out of the ordinary: the rows of docs/vek-files.md that can be
// seen here.
#include <gtest/gtest.h>

#include "tests/support/thrown.h"
#include "tests/vek/temporary_directory.h"
#include "vek/exception.h"
#include "vek/fs/directories.h"
#include "vek/fs/file.h"
#include "vek/fs/move.h"
#include "vek/fs/operations.h"

namespace {

using vek::fs::Access;
using vek::fs::File;
using vek::test::codeThrownBy;

class UnusualPathTest : public vek::test::TemporaryDirectoryTest {
  protected:
    static void create(const std::string& name) {
        File file;
        file.open(name, Access::write, vek::fs::createIfMissing);
    }
    std::string longPath() const {
        return path(std::string(200, 'd')) + "\\" + std::string(100, 'f');
    }
};

TEST_F(UnusualPathTest, LongPathIsAnErrorOfEveryOperation) {
    const auto isTooLong = [](std::uint32_t code) {
        return code == ERROR_PATH_NOT_FOUND || code == ERROR_FILENAME_EXCED_RANGE;
    };
    vek::fs::createDirectory(path(std::string(200, 'd')));
    File file;
    EXPECT_TRUE(isTooLong(codeThrownBy<vek::FsError>(
        [&] { file.open(longPath(), Access::write, vek::fs::createIfMissing); })));
    EXPECT_TRUE(isTooLong(codeThrownBy<vek::FsError>([&] { vek::fs::stat(longPath()); })));
    EXPECT_TRUE(isTooLong(codeThrownBy<vek::FsError>([&] { vek::fs::removeFile(longPath()); })));
    EXPECT_TRUE(
        isTooLong(codeThrownBy<vek::FsError>([&] { vek::fs::removeDirectory(longPath()); })));
    EXPECT_TRUE(
        isTooLong(codeThrownBy<vek::FsError>([&] { vek::fs::createDirectory(longPath()); })));
}

TEST_F(UnusualPathTest, PrefixDoesNotLiftTheLimitOfNarrowPaths) {
    const std::string prefix = "\\\\?\\";
    vek::fs::createDirectory(prefix + path(std::string(200, 'd')));
    EXPECT_TRUE(vek::fs::stat(path(std::string(200, 'd'))).isDirectory());
    File file;
    EXPECT_EQ(codeThrownBy<vek::FsError>(
                  [&] { file.open(prefix + longPath(), Access::write, vek::fs::createIfMissing); }),
              static_cast<std::uint32_t>(ERROR_FILENAME_EXCED_RANGE));
}

TEST_F(UnusualPathTest, DotsAndBlanksAtTheEndAreDropped) {
    for (const std::string name : {"a.", "a ", "a. ."}) {
        create(path(name));
        EXPECT_EQ(GetFileAttributesA(path("a").c_str()) & FILE_ATTRIBUTE_DIRECTORY, 0u) << name;
        EXPECT_TRUE(vek::fs::exists(path(name))) << name;
        EXPECT_TRUE(vek::fs::isRegularFile(path(name))) << name;
        vek::fs::removeFile(path(name));
        EXPECT_FALSE(vek::fs::exists(path("a"))) << name;
    }
    vek::fs::createDirectory(path("d."));
    EXPECT_TRUE(vek::fs::stat(path("d")).isDirectory());
}

TEST_F(UnusualPathTest, DeviceNameIsTheDeviceInEveryDirectory) {
    create(path("nul"));
    EXPECT_TRUE(vek::fs::isEmptyDirectory(path()));
    EXPECT_FALSE(vek::fs::isRegularFile(path("nul")));
    EXPECT_THROW(vek::fs::removeFile(path("nul")), vek::FsError);
    EXPECT_THROW(vek::fs::removeIfExists(path("nul")), vek::Exception);
}

TEST_F(UnusualPathTest, FileInUseWithoutSharingIsASharingViolation) {
    writeFile("used", "x");
    const HANDLE use =
        CreateFileA(path("used").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    File file;
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { file.open(path("used"), Access::read); }),
              static_cast<std::uint32_t>(ERROR_SHARING_VIOLATION));
    EXPECT_TRUE(vek::fs::exists(path("used")));
    EXPECT_TRUE(vek::fs::isRegularFile(path("used")));
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { vek::fs::removeFile(path("used")); }),
              static_cast<std::uint32_t>(ERROR_SHARING_VIOLATION));
    EXPECT_THROW(vek::fs::move(path("used"), path("other")), vek::RuntimeError);
    CloseHandle(use);
    EXPECT_EQ(readFile("used"), "x");
}

}  // namespace
