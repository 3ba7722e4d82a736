#include "vek/fs/current_directory.h"

#include <gtest/gtest.h>

#include "tests/support/thrown.h"
#include "tests/vek/temporary_directory.h"
#include "vek/base/windows.h"
#include "vek/exception.h"

namespace {

using vek::fs::changeDirectory;
using vek::fs::currentDirectory;
using vek::fs::expand;
using vek::test::codeThrownBy;

// Ends where it began, as a current directory can't be removed.
class CurrentDirectoryTest : public vek::test::TemporaryDirectoryTest {
  protected:
    CurrentDirectoryTest() { changeDirectory(path()); }
    ~CurrentDirectoryTest() override { changeDirectory(before); }

  private:
    std::string before = currentDirectory();
};

TEST_F(CurrentDirectoryTest, ChangesAndIsToldWithoutATrailingSeparator) {
    EXPECT_EQ(currentDirectory(), path());
    CreateDirectoryA("sub", nullptr);
    changeDirectory("sub\\");
    EXPECT_EQ(currentDirectory(), path("sub"));
    changeDirectory("C:\\");
    EXPECT_EQ(currentDirectory(), "C:\\");
}

TEST_F(CurrentDirectoryTest, FailedChangeIsAnFsErrorAndChangesNothing) {
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { changeDirectory(path("none")); }), 2u);
    writeFile("file", "");
    EXPECT_THROW(changeDirectory(path("file")), vek::FsError);
    EXPECT_EQ(
        codeThrownBy<vek::FsError>([&] { changeDirectory(std::string("C:\\windows\0x", 12)); }),
        static_cast<std::uint32_t>(ERROR_INVALID_NAME));
    EXPECT_EQ(currentDirectory(), path());
}

TEST_F(CurrentDirectoryTest, LongestDirectoryIsToldWhole) {
    std::string deep = path();
    deep += "\\" + std::string(250 - deep.size(), 'd');
    ASSERT_NE(CreateDirectoryA(deep.substr(0, 245).c_str(), nullptr), 0);
    changeDirectory(deep.substr(0, 245));
    EXPECT_EQ(currentDirectory(), deep.substr(0, 245));
}

TEST_F(CurrentDirectoryTest, ExpandGoesByIt) {
    const std::string parent = path().substr(0, path().rfind('\\'));
    EXPECT_EQ(expand("C:\\x\\..\\y"), "C:\\x\\..\\y");
    EXPECT_EQ(expand("."), path());
    EXPECT_EQ(expand(".."), parent);
    EXPECT_EQ(expand("..\\x"), parent + "\\x");
    EXPECT_EQ(expand("x\\..\\y"), path("x\\..\\y"));
    EXPECT_EQ(expand(""), path());
    EXPECT_EQ(expand(path().substr(0, 2) + "x"), path("x"));
}

TEST_F(CurrentDirectoryTest, ExpandDoublesNoSeparatorInADrivesRoot) {
    changeDirectory("C:\\");
    EXPECT_EQ(expand("."), "C:\\");
    EXPECT_EQ(expand(""), "C:\\");
    EXPECT_EQ(expand("x"), "C:\\x");
    EXPECT_EQ(expand("..\\x"), "C:\\x");
}

TEST_F(CurrentDirectoryTest, ExpandFailsOnADriveWithoutOne) {
    EXPECT_EQ(vek::test::textThrownBy<vek::RuntimeError>([] { expand("Q:x"); }),
              "can't expand path, because CWD doesn't exist");
}

}  // namespace
