#include "vek/fs/dir.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/thrown.h"
#include "tests/vek/temporary_directory.h"
#include "vek/exception.h"
#include "vek/fs/current_directory.h"
#include "vek/fs/directories.h"

namespace {

using vek::fs::Dir;
using vek::test::codeThrownBy;
using vek::test::textThrownBy;

std::vector<std::string> namesIn(Dir& dir) {
    std::vector<std::string> names;
    while (dir.next()) {
        EXPECT_FALSE(dir.isDotEntry());
        names.push_back(dir.name());
    }
    std::sort(names.begin(), names.end());
    return names;
}

class DirTest : public vek::test::TemporaryDirectoryTest {
  protected:
    void makeDirectory(const std::string& name) const {
        EXPECT_NE(CreateDirectoryA(path(name).c_str(), nullptr), 0);
    }
};

TEST_F(DirTest, GivesEveryEntryOnceButTheDotEntries) {
    makeDirectory("sub");
    for (const char* name : {"a", "b.c", "...d", ".hidden"}) {
        writeFile(name, "");
    }
    Dir dir;
    dir.open(path());
    EXPECT_EQ(namesIn(dir), (std::vector<std::string>{"...d", ".hidden", "a", "b.c", "sub"}));
}

TEST_F(DirTest, GivesManyEntries) {
    for (int i = 0; i < 1000; ++i) {
        writeFile(std::to_string(i), "");
    }
    Dir dir;
    dir.open(path());
    EXPECT_EQ(namesIn(dir).size(), 1000u);
}

TEST_F(DirTest, EmptyDirectoryEndsAtTheFirstNext) {
    Dir dir;
    dir.open(path());
    EXPECT_FALSE(dir.next());
    EXPECT_FALSE(dir.next());
    EXPECT_EQ(dir.name(), "");
}

TEST_F(DirTest, OpeningWhatIsNoDirectoryFails) {
    writeFile("file", "");
    Dir dir;
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { dir.open(path("none")); }), 3u);
    EXPECT_THROW(dir.open(path("file")), vek::FsError);
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { dir.open(path() + std::string("\0x", 2)); }),
              static_cast<std::uint32_t>(ERROR_INVALID_NAME));
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { dir.next(); }), "Usage error: invalid directory");
}

TEST_F(DirTest, ErrorOfOpeningNamesTheDirectory) {
    Dir dir;
    try {
        dir.open(path("none"));
        ADD_FAILURE();
    } catch (const vek::FsError& error) {
        EXPECT_EQ(error.path(), path("none"));
    }
}

TEST_F(DirTest, OpeningAgainBeginsAnew) {
    makeDirectory("sub");
    writeFile("sub\\x", "");
    Dir dir;
    dir.open(path());
    EXPECT_TRUE(dir.next());
    dir.open(path("sub"));
    EXPECT_EQ(dir.name(), "");
    EXPECT_EQ(namesIn(dir), std::vector<std::string>{"x"});
    EXPECT_THROW(dir.open(path("none")), vek::FsError);
    EXPECT_THROW(dir.next(), vek::UsageError);
}

TEST_F(DirTest, ClosedDirectoryHasNoEntries) {
    writeFile("x", "");
    Dir dir;
    EXPECT_NO_THROW(dir.close());
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { dir.next(); }), "Usage error: invalid directory");
    dir.open(path());
    EXPECT_TRUE(dir.next());
    dir.close();
    EXPECT_EQ(dir.name(), "");
    EXPECT_FALSE(dir.isDotEntry());
    EXPECT_THROW(dir.next(), vek::UsageError);
    EXPECT_THROW(dir.stat(), vek::UsageError);
}

TEST_F(DirTest, ClosesItsSearchSoThatTheDirectoryCanGo) {
    makeDirectory("sub");
    {
        Dir dir;
        dir.open(path("sub"));
    }
    EXPECT_NE(RemoveDirectoryA(path("sub").c_str()), 0);
    EXPECT_EQ(GetFileAttributesA(path("sub").c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(DirTest, StatTellsOfTheCurrentEntry) {
    makeDirectory("sub");
    writeFile("sub\\file", "12345");
    Dir dir;
    dir.open(path());
    ASSERT_TRUE(dir.next());
    EXPECT_TRUE(dir.stat().isDirectory());
    dir.open(path("sub"));
    ASSERT_TRUE(dir.next());
    EXPECT_EQ(dir.stat().nFileSizeLow, 5u);
    DeleteFileA(path("sub\\file").c_str());
    EXPECT_THROW(dir.stat(), vek::NoSuchFileError);
}

TEST_F(DirTest, StatNeedsACurrentEntry) {
    const std::string expected = "Usage error: No valid dir or dir entry selected";
    writeFile("x", "");
    Dir dir;
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { dir.stat(); }), expected);
    dir.open(path());
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { dir.stat(); }), expected);
    EXPECT_TRUE(dir.next());
    EXPECT_NO_THROW(dir.stat());
    EXPECT_FALSE(dir.next());
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { dir.stat(); }), expected);
}

TEST_F(DirTest, OpensTheCurrentEntryInAnotherObjectOrItself) {
    makeDirectory("sub");
    makeDirectory("sub\\deeper");
    writeFile("sub\\deeper\\x", "");
    Dir dir;
    dir.open(path());
    ASSERT_TRUE(dir.next());
    Dir other;
    dir.openEntry(other);
    ASSERT_TRUE(other.next());
    EXPECT_EQ(other.name(), "deeper");
    other.openEntry(other);
    EXPECT_EQ(namesIn(other), std::vector<std::string>{"x"});
    EXPECT_FALSE(dir.next());
}

TEST_F(DirTest, OpeningAnEntryNeedsACurrentOne) {
    const std::string expected = "Usage error: The Dir object is invalid";
    writeFile("x", "");
    Dir dir;
    Dir other;
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { dir.openEntry(other); }), expected);
    dir.open(path());
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { dir.openEntry(other); }), expected);
    ASSERT_TRUE(dir.next());
    EXPECT_THROW(dir.openEntry(other), vek::FsError);  // it is a file
    EXPECT_FALSE(dir.next());
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { dir.openEntry(other); }), expected);
}

TEST_F(DirTest, DotEntryIsSeenAheadOfTheFirstNextOnly) {
    writeFile("x", "");
    Dir dir;
    EXPECT_FALSE(dir.isDotEntry());
    dir.open(path());
    EXPECT_TRUE(dir.isDotEntry());
    EXPECT_TRUE(dir.next());
    EXPECT_FALSE(dir.isDotEntry());
}

TEST_F(DirTest, EmptyPathIsTheRootOfTheDrive) {
    const std::string before = vek::fs::currentDirectory();
    vek::fs::changeDirectory(path());
    Dir dir;
    dir.open("");
    vek::fs::changeDirectory(before);
    const std::vector<std::string> names = namesIn(dir);
    EXPECT_EQ(std::count(names.begin(), names.end(), "windows"), 1);
}

// Holds a search that the system doesn't know.
class BrokenDir : public Dir {
  public:
    BrokenDir() { findHandle = nullptr; }
};

TEST_F(DirTest, FailedCloseThrowsAndLeavesItClosed) {
    BrokenDir dir;
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { dir.close(); }),
              static_cast<std::uint32_t>(ERROR_INVALID_HANDLE));
    EXPECT_NO_THROW(dir.close());
    EXPECT_NO_THROW(dir.open(path()));
}

TEST_F(DirTest, FailedNextIsAnOsErrorAndLeavesNoEntry) {
    testing::internal::CaptureStderr();
    {
        BrokenDir dir;
        EXPECT_EQ(codeThrownBy<vek::OsError>([&] { dir.next(); }),
                  static_cast<std::uint32_t>(ERROR_INVALID_HANDLE));
        EXPECT_EQ(dir.name(), "");
    }
    testing::internal::GetCapturedStderr();
}

TEST_F(DirTest, FailedCloseInTheDestructorIsReportedOnly) {
    testing::internal::CaptureStderr();
    { const BrokenDir dir; }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error closing directory:" + vek::OsError(ERROR_INVALID_HANDLE).printableText());
}

TEST_F(DirTest, TellsWhetherADirectoryIsEmpty) {
    EXPECT_TRUE(vek::fs::isEmptyDirectory(path()));
    makeDirectory("sub");
    EXPECT_FALSE(vek::fs::isEmptyDirectory(path()));
    EXPECT_THROW(vek::fs::isEmptyDirectory(path("none")), vek::FsError);
}

TEST_F(DirTest, AttributesAreThoseOfTheSearch) {
    vek::fs::createDirectory(path("sub"));
    writeFile("sub\\file", "");
    SetFileAttributesA(path("sub\\file").c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
    Dir dir;
    EXPECT_THROW(dir.attributes(), vek::UsageError);
    dir.open(path("sub"));
    EXPECT_THROW(dir.attributes(), vek::UsageError);
    ASSERT_TRUE(dir.next());
    EXPECT_EQ(dir.attributes() & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN),
              static_cast<DWORD>(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
    EXPECT_EQ(dir.attributes() & FILE_ATTRIBUTE_DIRECTORY, 0u);
    EXPECT_FALSE(dir.next());
    EXPECT_THROW(dir.attributes(), vek::UsageError);
    dir.open(path());
    ASSERT_TRUE(dir.next());
    EXPECT_EQ(dir.attributes() & FILE_ATTRIBUTE_DIRECTORY,
              static_cast<DWORD>(FILE_ATTRIBUTE_DIRECTORY));
    dir.close();
    SetFileAttributesA(path("sub\\file").c_str(), FILE_ATTRIBUTE_NORMAL);
}

}  // namespace
