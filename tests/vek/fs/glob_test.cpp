#include "vek/fs/glob.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/support/thrown.h"
#include "tests/vek/temporary_directory.h"
#include "vek/exception.h"
#include "vek/fs/current_directory.h"
#include "vek/fs/dir.h"

namespace {

using vek::fs::glob;
using vek::test::codeThrownBy;

using Names = std::vector<std::string>;

class GlobTest : public vek::test::TemporaryDirectoryTest {
  protected:
    GlobTest() {
        for (const char* name : {"b.log", "a.log", "B.log", "c.txt"}) {
            writeFile(name, "");
        }
        CreateDirectoryA(path("d.log").c_str(), nullptr);
        writeFile("d.log\\e.log", "");
    }
};

TEST_F(GlobTest, FindsFilesAndDirectoriesWithTheDirectoryAhead) {
    EXPECT_EQ(glob(path("*.txt"), true), Names{path("c.txt")});
    EXPECT_EQ(glob(path("?.txt"), false), Names{path("c.txt")});
    EXPECT_EQ(glob(path("d.log\\*.log"), false), Names{path("d.log\\e.log")});
    EXPECT_EQ(glob(path("c.txt"), false), Names{path("c.txt")});
}

TEST_F(GlobTest, SortsByBytesOnlyIfAsked) {
    const Names sorted = glob(path("*.log"), true);
    // Names that differ only in case are one here, unless the file system is case-sensitive.
    EXPECT_TRUE(std::is_sorted(sorted.begin(), sorted.end()));
    EXPECT_EQ(sorted.front(), path("a.log"));
    EXPECT_EQ(sorted.back(), path("d.log"));
    Names unsorted = glob(path("*.log"), false);
    std::sort(unsorted.begin(), unsorted.end());
    EXPECT_EQ(unsorted, sorted);
}

TEST_F(GlobTest, SortedCapitalsComeFirst) {
    writeFile("Z.log", "");
    EXPECT_EQ(glob(path("*.log"), true).front(), path("Z.log"));
}

TEST_F(GlobTest, UnsortedIsInTheOrderOfTheSystem) {
    writeFile("Z.log", "");
    Names inItsOrder;
    vek::fs::Dir dir;
    dir.open(path());
    while (dir.next()) {
        if (dir.name().ends_with(".log")) {
            inItsOrder.push_back(path(dir.name()));
        }
    }
    EXPECT_EQ(glob(path("*.log"), false), inItsOrder);
}

TEST_F(GlobTest, NamesComeAloneWithoutADirectory) {
    const std::string before = vek::fs::currentDirectory();
    vek::fs::changeDirectory(path());
    EXPECT_EQ(glob("*.txt", false), Names{"c.txt"});
    EXPECT_EQ(glob("d.log\\*.log", false), Names{"d.log\\e.log"});
    EXPECT_EQ(glob(".\\*.txt", false), Names{".\\c.txt"});
    vek::fs::changeDirectory(before);
}

TEST_F(GlobTest, NamesInTheRootOfTheCurrentDriveComeAlone) {
    const std::string before = vek::fs::currentDirectory();
    vek::fs::changeDirectory("C:\\");
    EXPECT_EQ(glob("\\windows", false), Names{"windows"});
    EXPECT_EQ(glob("C:\\windows", false), Names{"C:\\windows"});
    vek::fs::changeDirectory(before);
}

TEST_F(GlobTest, SeparatorsAtTheEndAreIgnored) {
    EXPECT_EQ(glob(path("d.log\\\\"), false), Names{path("d.log")});
    EXPECT_EQ(glob(path("c.*/"), false), Names{path("c.txt")});
}

TEST_F(GlobTest, DotEntriesAreFoundToo) {
    const Names all = glob(path("d.log\\*"), true);
    EXPECT_EQ(all, (Names{path("d.log\\."), path("d.log\\.."), path("d.log\\e.log")}));
}

TEST_F(GlobTest, NothingFoundIsAnEmptyList) {
    EXPECT_EQ(glob(path("*.none"), true), Names{});
    EXPECT_EQ(glob(path("none"), false), Names{});
}

TEST_F(GlobTest, OtherErrorsAreFsErrorsOfThePattern) {
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { glob(path("none\\*"), false); }), 3u);
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { glob(path("*\\x"), false); }), 123u);
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { glob(std::string("*\0", 2), false); }), 123u);
    EXPECT_EQ(codeThrownBy<vek::FsError>([] { glob("", false); }), 3u);
    try {
        glob(path("none\\*\\"), false);
        ADD_FAILURE();
    } catch (const vek::FsError& error) {
        EXPECT_EQ(error.path(), path("none\\*\\"));
    }
}

TEST_F(GlobTest, SearchIsEndedSoThatTheDirectoryCanGo) {
    EXPECT_EQ(glob(path("d.log\\*.log"), false).size(), 1u);
    EXPECT_NE(DeleteFileA(path("d.log\\e.log").c_str()), 0);
    EXPECT_NE(RemoveDirectoryA(path("d.log").c_str()), 0);
    EXPECT_EQ(GetFileAttributesA(path("d.log").c_str()), INVALID_FILE_ATTRIBUTES);
}

}  // namespace
