#include "vek/os/directory.h"

#include <array>
#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/heap_blocks.h"
#include "tests/vek/directory_link.h"
#include "tests/vek/temporary_directory.h"
#include "tests/vek/wide_name.h"

namespace {

const std::string veryLong(100000, 'n');

class OsDirectory : public vek::test::TemporaryDirectoryTest {
  protected:
    bool exists(const std::string& name) const {
        return GetFileAttributesA(path(name).c_str()) != INVALID_FILE_ATTRIBUTES;
    }
    bool isDirectory(const std::string& name) const {
        const DWORD attributes = GetFileAttributesA(path(name).c_str());
        return attributes != INVALID_FILE_ATTRIBUTES &&
               (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    }
    void makeDirectory(const std::string& name) const {
        EXPECT_NE(CreateDirectoryA(path(name).c_str(), nullptr), 0) << GetLastError();
    }
    // A name with which a path below this test's directory has `length` bytes.
    std::string nameForPathOf(std::size_t length) const {
        return std::string(length - path("").size() - 1, 'd');
    }
};

// The place for temporary files is that of the process; the tests put it into their own directory.
class TempDirectory : public OsDirectory {
  protected:
    TempDirectory() {
        GetEnvironmentVariableA("TMP", former.data(), former.size());
        SetEnvironmentVariableA("TMP", path().c_str());
    }
    ~TempDirectory() override { SetEnvironmentVariableA("TMP", former.data()); }

    std::array<char, 1000> former = {};
};

using CreateDirectories = OsDirectory;
using CreateDirectoriesIfMissing = OsDirectory;
using RemoveDirectoryTest = OsDirectory;
using RemoveTree = OsDirectory;

TEST_F(TempDirectory, IsNewAndStandsInThePlaceForTemporaryFiles) {
    std::array<char, MAX_PATH> buffer = {};
    ASSERT_EQ(vek::os::tempDirectory(buffer.data(), buffer.size()), 1);
    const std::string made = buffer.data();
    const std::string start = path("vek-");
    EXPECT_EQ(made.substr(0, start.size()), start);
    EXPECT_EQ(made.size(), start.size() + 6);
    EXPECT_EQ(made.find('X'), std::string::npos);
    EXPECT_TRUE(isDirectory(made.substr(path("").size() + 1)));
}

TEST_F(TempDirectory, PlaceThatEndsInABackslashGetsNoOther) {
    SetEnvironmentVariableA("TMP", (path() + "\\").c_str());
    std::array<char, MAX_PATH> buffer = {};
    ASSERT_EQ(vek::os::tempDirectory(buffer.data(), buffer.size()), 1);
    EXPECT_EQ(std::string(buffer.data()).find("\\\\"), std::string::npos) << buffer.data();
    EXPECT_EQ(std::string(buffer.data()).find(path("vek-")), 0u);
}

TEST_F(TempDirectory, ProcessGets26AtATime) {
    std::set<std::string> made;
    std::array<char, MAX_PATH> buffer = {};
    while (made.size() < 100 && vek::os::tempDirectory(buffer.data(), buffer.size()) != 0) {
        EXPECT_TRUE(made.insert(buffer.data()).second) << "given twice: " << buffer.data();
    }
    EXPECT_EQ(made.size(), 26u);
    EXPECT_STREQ(buffer.data(), "");
    ASSERT_NE(RemoveDirectoryA(made.begin()->c_str()), 0);
    EXPECT_EQ(vek::os::tempDirectory(buffer.data(), buffer.size()), 1);
    EXPECT_EQ(buffer.data(), *made.begin());
}

TEST_F(TempDirectory, SeveralThreadsGetDirectoriesOfTheirOwn) {
    std::atomic<int> failed = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                std::array<char, MAX_PATH> buffer = {};
                if (vek::os::tempDirectory(buffer.data(), buffer.size()) == 0 ||
                    RemoveDirectoryA(buffer.data()) == 0) {
                    ++failed;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failed, 0);
}

TEST_F(TempDirectory, BufferHasToHoldAllOfThePath) {
    const std::size_t needed = path("vek-XXXXXX").size() + 1;
    std::vector<char> buffer(needed + 1, 'x');
    for (std::size_t size = 1; size < needed; ++size) {
        std::fill(buffer.begin(), buffer.end(), 'x');
        EXPECT_EQ(vek::os::tempDirectory(buffer.data(), size), 0) << size;
        EXPECT_STREQ(buffer.data(), "");
        EXPECT_EQ(buffer[size], 'x') << size;
    }
    EXPECT_EQ(vek::os::tempDirectory(buffer.data(), needed), 1);
    EXPECT_EQ(std::string(buffer.data()).size() + 1, needed);
    EXPECT_EQ(buffer[needed], 'x');
    EXPECT_EQ(vek::os::tempDirectory(nullptr, 0), 0);
    EXPECT_EQ(vek::os::tempDirectory(nullptr, 260), 0);
    buffer[0] = 'y';
    EXPECT_EQ(vek::os::tempDirectory(buffer.data(), 0), 0);
    EXPECT_EQ(buffer[0], 'y');
}

TEST_F(TempDirectory, PlaceThatIsMissingIsAFailure) {
    SetEnvironmentVariableA("TMP", path("missing").c_str());
    std::array<char, MAX_PATH> buffer = {'x'};
    EXPECT_EQ(vek::os::tempDirectory(buffer.data(), buffer.size()), 0);
    EXPECT_STREQ(buffer.data(), "");
}

TEST_F(CreateDirectories, MakesAllThatAreMissing) {
    EXPECT_EQ(vek::os::createDirectories(path("a\\b/c\\d").c_str()), 1);
    EXPECT_TRUE(isDirectory("a\\b\\c\\d"));
    EXPECT_EQ(vek::os::createDirectories(path("a\\b\\c\\d").c_str()), 1);
    EXPECT_EQ(vek::os::createDirectories(path("a\\b\\other").c_str()), 1);
    EXPECT_TRUE(isDirectory("a\\b\\other"));
}

TEST_F(CreateDirectories, SeparatorsAtTheEndAndInARowAreNoError) {
    for (const char* name : {"back\\", "forward/", "two\\\\in//a\\/row", "many\\\\\\"}) {
        EXPECT_EQ(vek::os::createDirectories(path(name).c_str()), 1) << name;
        EXPECT_EQ(vek::os::createDirectories(path(name).c_str()), 1) << name << " again";
    }
    for (const char* name : {"back", "forward", "two\\in\\a\\row", "many"}) {
        EXPECT_TRUE(isDirectory(name)) << name;
    }
}

TEST_F(CreateDirectories, RelativePathStartsAtTheCurrentDirectory) {
    std::array<char, MAX_PATH> former = {};
    GetCurrentDirectoryA(former.size(), former.data());
    ASSERT_NE(SetCurrentDirectoryA(path().c_str()), 0);
    EXPECT_EQ(vek::os::createDirectories("x\\y/z"), 1);
    EXPECT_EQ(vek::os::createDirectories("no"), 1);
    // Deliberate: too short to be looked at.
    EXPECT_EQ(vek::os::createDirectories("n"), 1);
    EXPECT_EQ(vek::os::createDirectories(""), 1);
    SetCurrentDirectoryA(former.data());
    EXPECT_TRUE(isDirectory("x\\y\\z"));
    EXPECT_TRUE(isDirectory("no"));
    EXPECT_FALSE(exists("n"));
}

TEST_F(CreateDirectories, StopsAtTheFirstFailureAndKeepsWhatWasMade) {
    writeFile("file", "x");
    EXPECT_EQ(vek::os::createDirectories(path("file\\below").c_str()), 0);
    EXPECT_EQ(readFile("file"), "x");
    EXPECT_EQ(vek::os::createDirectories(path("made\\b?d\\below").c_str()), 0);
    EXPECT_TRUE(isDirectory("made"));
    EXPECT_EQ(vek::os::createDirectories(nullptr), 0);
}

TEST_F(CreateDirectories, FileIsNotLookedAtAnyCloser) {
    writeFile("file", "x");
    EXPECT_EQ(vek::os::createDirectories(path("file").c_str()), 1);
    EXPECT_EQ(readFile("file"), "x");
}

TEST_F(CreateDirectories, EightThreadsMayMakeTheSameOnes) {
    for (int round = 0; round < 20; ++round) {
        const std::string wanted = path(std::to_string(round) + "\\a\\b\\c\\d");
        std::atomic<int> ready = 0;
        std::atomic<int> made = 0;
        std::vector<std::thread> threads;
        for (int i = 0; i < 8; ++i) {
            threads.emplace_back([&] {
                ++ready;
                while (ready < 8) {
                }
                made += vek::os::createDirectories(wanted.c_str());
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(made, 8);
    }
}

TEST_F(CreateDirectories, PathOf260BytesOrMoreMakesNothing) {
    // Each name is short enough, and so would all paths but the last be.
    std::string name = "a";
    while (path(name).size() < 259) {
        name += name.size() % 20 == 19 && path(name).size() < 258 ? "\\" : "a";
    }
    const std::string below = name + "b";
    ASSERT_EQ(path(below).size(), 260u);
    EXPECT_EQ(vek::os::createDirectories(path(below).c_str()), 0);
    EXPECT_FALSE(exists(name.substr(0, name.find('\\'))));
    EXPECT_EQ(vek::os::createDirectories(path("b\\" + veryLong).c_str()), 0);
    EXPECT_FALSE(exists("b"));
}

TEST_F(CreateDirectories, LongPathBelowThatIsMade) {
    std::string name;
    while (path(name).size() < 230) {
        name += "123456789\\";
    }
    EXPECT_EQ(vek::os::createDirectories(path(name).c_str()), 1);
    name.pop_back();
    EXPECT_TRUE(isDirectory(name));
}

TEST_F(CreateDirectoriesIfMissing, MakesWhatIsMissing) {
    EXPECT_EQ(vek::os::createDirectoriesIfMissing(path("a\\b").c_str()), 1);
    EXPECT_TRUE(isDirectory("a\\b"));
    EXPECT_EQ(vek::os::createDirectoriesIfMissing(path("a\\b").c_str()), 1);
    writeFile("file", "x");
    EXPECT_EQ(vek::os::createDirectoriesIfMissing(path("file").c_str()), 1);
    EXPECT_EQ(vek::os::createDirectoriesIfMissing(path("file\\below").c_str()), 0);
    EXPECT_EQ(vek::os::createDirectoriesIfMissing(path(veryLong).c_str()), 0);
    EXPECT_EQ(vek::os::createDirectoriesIfMissing(""), 1);
    EXPECT_EQ(vek::os::createDirectoriesIfMissing(nullptr), 0);
}

TEST_F(RemoveDirectoryTest, RemovesAnEmptyOneOnly) {
    makeDirectory("full");
    writeFile("full\\file", "x");
    SetLastError(0);
    EXPECT_EQ(vek::os::removeDirectory(path("full").c_str()), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DIR_NOT_EMPTY));
    DeleteFileA(path("full\\file").c_str());
    EXPECT_EQ(vek::os::removeDirectory(path("full").c_str()), 1);
    EXPECT_FALSE(exists("full"));
    SetLastError(0);
    EXPECT_EQ(vek::os::removeDirectory(path("full").c_str()), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(vek::os::removeDirectory(nullptr), 0);
    EXPECT_EQ(vek::os::removeDirectory(""), 0);
    EXPECT_EQ(vek::os::removeDirectory(path(veryLong).c_str()), 0);
}

TEST_F(RemoveTree, RemovesAllThatIsInTheDirectory) {
    ASSERT_EQ(vek::os::createDirectories(path("top\\a\\b").c_str()), 1);
    ASSERT_EQ(vek::os::createDirectories(path("top\\with.dot.inside").c_str()), 1);
    ASSERT_EQ(vek::os::createDirectories(path("top\\empty").c_str()), 1);
    for (const char* name : {"top\\file", "top\\.hidden", "top\\a\\x.y", "top\\a\\b\\no-dot",
                             "top\\with.dot.inside\\f", "beside"}) {
        writeFile(name, "x");
    }
    SetFileAttributesA(path("top\\file").c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
    EXPECT_EQ(vek::os::removeTree(path("top").c_str()), 1);
    EXPECT_FALSE(exists("top"));
    EXPECT_TRUE(exists("beside"));
}

TEST_F(RemoveTree, EndsItsSearches) {
    EXPECT_TRUE(support::keepsNoMemory([&] {
        makeDirectory("top");
        EXPECT_EQ(vek::os::removeTree(path("top").c_str()), 1);
    }));
}

TEST_F(RemoveTree, EmptyDirectoryIsRemoved) {
    makeDirectory("top");
    EXPECT_EQ(vek::os::removeTree(path("top").c_str()), 1);
    EXPECT_FALSE(exists("top"));
}

TEST_F(RemoveTree, MissingDirectoryGivesZero) {
    EXPECT_EQ(vek::os::removeTree(path("missing").c_str()), 0);
    EXPECT_EQ(vek::os::removeTree(path("missing\\below").c_str()), 0);
    EXPECT_EQ(vek::os::removeTree(nullptr), 0);
}

TEST_F(RemoveTree, FileIsNoTree) {
    writeFile("file", "x");
    EXPECT_EQ(vek::os::removeTree(path("file").c_str()), 0);
    EXPECT_EQ(readFile("file"), "x");
}

// Deliberate: the removal goes on around such a directory, and fails at the end.
TEST_F(RemoveTree, DirectoryWithALeadingDotIsSkipped) {
    ASSERT_EQ(vek::os::createDirectories(path("top\\a\\.kept").c_str()), 1);
    ASSERT_EQ(vek::os::createDirectories(path("top\\z").c_str()), 1);
    writeFile("top\\a\\.kept\\file", "x");
    writeFile("top\\a\\.gone", "x");
    writeFile("top\\z\\gone", "x");
    EXPECT_EQ(vek::os::removeTree(path("top").c_str()), 0);
    EXPECT_EQ(readFile("top\\a\\.kept\\file"), "x");
    EXPECT_FALSE(exists("top\\a\\.gone"));
    EXPECT_FALSE(exists("top\\z"));
    // It is the name that counts, not that of the directory to be removed.
    EXPECT_EQ(vek::os::removeTree(path("top\\a\\.kept").c_str()), 1);
    EXPECT_EQ(vek::os::removeTree(path("top").c_str()), 1);
}

TEST_F(RemoveTree, ReadOnlyFileStaysAndMakesItFail) {
    makeDirectory("top");
    writeFile("top\\a", "x");
    writeFile("top\\read-only", "x");
    writeFile("top\\z", "x");
    SetFileAttributesA(path("top\\read-only").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(vek::os::removeTree(path("top").c_str()), 0);
    EXPECT_TRUE(exists("top\\read-only"));
    EXPECT_FALSE(exists("top\\a"));
    EXPECT_FALSE(exists("top\\z"));
    SetFileAttributesA(path("top\\read-only").c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(vek::os::removeTree(path("top").c_str()), 1);
}

TEST_F(RemoveTree, FileInUseStaysAndMakesItFail) {
    makeDirectory("top");
    writeFile("top\\used", "x");
    const HANDLE use =
        CreateFileA(path("top\\used").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(vek::os::removeTree(path("top").c_str()), 0);
    CloseHandle(use);
    EXPECT_TRUE(exists("top\\used"));
    EXPECT_EQ(vek::os::removeTree(path("top").c_str()), 1);
}

TEST_F(RemoveTree, SeparatorAtTheEndIsNoError) {
    for (const char* name : {"top\\", "top/"}) {
        makeDirectory("top");
        writeFile("top\\file", "x");
        EXPECT_EQ(vek::os::removeTree(path(name).c_str()), 1) << name;
        EXPECT_FALSE(exists("top"));
    }
}

TEST_F(RemoveTree, PathOfAnEntryMayHave255Bytes) {
    makeDirectory("top");
    const std::size_t room = 255 - path("top").size() - 1;
    writeFile("top\\" + std::string(room, 'f'), "x");
    ASSERT_EQ(path("top\\" + std::string(room, 'f')).size(), 255u);
    EXPECT_EQ(vek::os::removeTree(path("top").c_str()), 1);
}

TEST_F(RemoveTree, EntryWhosePathHas256BytesStaysAndMakesItFail) {
    const std::string directory = nameForPathOf(240);
    makeDirectory(directory);
    const std::size_t room = 255 - 240 - 1;
    const std::string other = directory + "\\" + std::string(room, 'f');
    writeFile(other + "g", "x");
    ASSERT_EQ(path(other + "g").size(), 256u);
    makeDirectory(directory + "\\" + std::string(room, 'd') + "e");
    EXPECT_EQ(vek::os::removeTree(path(directory).c_str()), 0);
    EXPECT_TRUE(exists(other + "g"));
    EXPECT_TRUE(exists(directory + "\\" + std::string(room, 'd') + "e"));
    // The shorter names are entries of their own, and go.
    writeFile(other, "x");
    EXPECT_EQ(vek::os::removeTree(path(directory).c_str()), 0);
    EXPECT_FALSE(exists(other));
    EXPECT_TRUE(exists(other + "g"));
}

// The pattern "/*.*" takes 4 bytes more than the path.
TEST_F(RemoveTree, DirectoryWhosePathIsTooLongForThePatternIsRemovedIfEmpty) {
    const std::string fits = nameForPathOf(251);
    makeDirectory(fits);
    writeFile(fits + "\\f", "x");
    EXPECT_EQ(vek::os::removeTree(path(fits).c_str()), 1);
    makeDirectory(fits);
    const std::string tooLong = nameForPathOf(252).substr(0, fits.size() - 10) + "-too-long11";
    ASSERT_EQ(path(tooLong).size(), 252u);
    // The system itself makes no directory with so long a path but by way of a shorter one.
    makeDirectory("short");
    writeFile("short\\f", "x");
    ASSERT_NE(MoveFileA(path("short").c_str(), path(tooLong).c_str()), 0) << GetLastError();
    EXPECT_EQ(vek::os::removeTree(path(tooLong).c_str()), 0);
    EXPECT_TRUE(exists(tooLong + "\\f"));
    EXPECT_TRUE(exists(fits)) << "the path was cut";
    DeleteFileA(path(tooLong + "\\f").c_str());
    EXPECT_EQ(vek::os::removeTree(path(tooLong).c_str()), 1);
    EXPECT_EQ(vek::os::removeTree(path(veryLong).c_str()), 0);
}

// What a link leads to stays. See DirectoryLink for what becomes of the link itself.
TEST_F(RemoveTree, LinkIsNotFollowed) {
    ASSERT_EQ(vek::os::createDirectories(path("target\\sub").c_str()), 1);
    writeFile("target\\sub\\file", "x");
    ASSERT_EQ(vek::os::createDirectories(path("top\\a").c_str()), 1);
    writeFile("top\\gone", "x");
    const vek::test::DirectoryLink link(path("top\\a"), "link", "../../target");
    EXPECT_EQ(vek::os::removeTree(path("top").c_str()), exists("top") ? 0 : 1);
    EXPECT_FALSE(exists("top\\gone"));
    EXPECT_EQ(readFile("target\\sub\\file"), "x");
}

TEST_F(RemoveTree, PathThatIsALinkIsNotFollowedEither) {
    ASSERT_EQ(vek::os::createDirectories(path("target\\sub").c_str()), 1);
    writeFile("target\\sub\\file", "x");
    for (const char* name : {"link", "link\\", "link/"}) {
        const vek::test::DirectoryLink link(path(), "link", "target");
        EXPECT_EQ(vek::os::removeTree(path(name).c_str()), link.isThere() ? 0 : 1) << name;
        EXPECT_EQ(readFile("target\\sub\\file"), "x") << name;
    }
}

// U+FF3C is similar to a backslash, which the search returns for it in code page 1252.
TEST_F(RemoveTree, EntryWhoseNameLeadsElsewhereStaysAndMakesItFail) {
    if (GetACP() != 1252) {
        GTEST_SKIP() << "of code page 1252";
    }
    makeDirectory("top");
    writeFile("victim.txt", "x");
    writeFile("top\\gone", "x");
    const std::string directory = path("top\\");
    const std::wstring entry =
        std::wstring(directory.begin(), directory.end()) + L"..\uFF3Cvictim.txt";
    if (!vek::test::makeWideFile(entry)) {
        vek::test::runAgainWithWideNames(path());
        return;
    }
    EXPECT_EQ(vek::os::removeTree(path("top").c_str()), 0);
    EXPECT_EQ(readFile("victim.txt"), "x");
    EXPECT_NE(GetFileAttributesW(entry.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_FALSE(exists("top\\gone"));
    DeleteFileW(entry.c_str());
    EXPECT_EQ(vek::os::removeTree(path("top").c_str()), 1);
}

}  // namespace
