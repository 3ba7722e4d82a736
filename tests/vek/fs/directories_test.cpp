#include "vek/fs/directories.h"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/thrown.h"
#include "tests/vek/directory_link.h"
#include "tests/vek/temporary_directory.h"
#include "tests/vek/wide_name.h"
#include "vek/exception.h"
#include "vek/fs/current_directory.h"
#include "vek/fs/operations.h"

namespace {

using vek::fs::createDirectories;
using vek::fs::ensureDirectories;
using vek::fs::removeTree;
using vek::test::codeThrownBy;

class DirectoriesTest : public vek::test::TemporaryDirectoryTest {
  protected:
    bool isDirectory(const std::string& name) const {
        const DWORD attributes = GetFileAttributesA(path(name).c_str());
        return attributes != INVALID_FILE_ATTRIBUTES &&
               (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    }
    bool isThere(const std::string& name) const {
        return GetFileAttributesA(path(name).c_str()) != INVALID_FILE_ATTRIBUTES;
    }
};

TEST_F(DirectoriesTest, MakesEveryMissingLevel) {
    createDirectories(path("a"));
    EXPECT_TRUE(isDirectory("a"));
    createDirectories(path("a\\b\\c\\d\\e"));
    EXPECT_TRUE(isDirectory("a\\b\\c\\d\\e"));
    createDirectories(path("a\\b\\x\\y\\\\"));
    EXPECT_TRUE(isDirectory("a\\b\\x\\y"));
    createDirectories(path("a\\\\double\\\\separators"));
    EXPECT_TRUE(isDirectory("a\\double\\separators"));
}

TEST_F(DirectoriesTest, MakesRelativePaths) {
    const std::string before = vek::fs::currentDirectory();
    vek::fs::changeDirectory(path());
    EXPECT_NO_THROW(createDirectories("r\\s\\t"));
    vek::fs::changeDirectory(before);
    EXPECT_TRUE(isDirectory("r\\s\\t"));
}

TEST_F(DirectoriesTest, WholePathThatExistsIsFileExists) {
    createDirectories(path("a\\b"));
    EXPECT_EQ(codeThrownBy<vek::FileExistsError>([&] { createDirectories(path("a\\b")); }), 183u);
    EXPECT_EQ(codeThrownBy<vek::FileExistsError>([&] { createDirectories(path("a\\b\\")); }), 183u);
    writeFile("file", "");
    EXPECT_EQ(codeThrownBy<vek::FileExistsError>([&] { createDirectories(path("file")); }), 183u);
}

TEST_F(DirectoriesTest, FileInTheWayIsFileExists) {
    writeFile("file", "");
    try {
        createDirectories(path("file\\a\\b"));
        ADD_FAILURE();
    } catch (const vek::FileExistsError& error) {
        EXPECT_EQ(error.path(), path("file"));
    }
    EXPECT_THROW(ensureDirectories(path("file\\a\\b")), vek::FileExistsError);
}

TEST_F(DirectoriesTest, OtherErrorsPass) {
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { createDirectories(path("a\\b|c")); }),
              static_cast<std::uint32_t>(ERROR_INVALID_NAME));
    EXPECT_THROW(createDirectories("Q:\\a\\b"), vek::FsError);
    EXPECT_EQ(codeThrownBy<vek::NoSuchFileError>([] { createDirectories(""); }), 3u);
    // Found by backslashes alone.
    EXPECT_THROW(createDirectories("C:/vek-none/a"), vek::NoSuchFileError);
}

TEST_F(DirectoriesTest, ZeroByteInThePathIsRefusedAndMakesNothing) {
    EXPECT_EQ(
        codeThrownBy<vek::FsError>([&] { createDirectories(path("z") + std::string("\0\\y", 3)); }),
        static_cast<std::uint32_t>(ERROR_INVALID_NAME));
    EXPECT_FALSE(isThere("z"));
}

TEST_F(DirectoriesTest, VeryLongPathIsRefused) {
    std::string path32k = "C:\\vek-none";
    while (path32k.size() < 32000) {
        path32k += "\\a";
    }
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { createDirectories(path32k); }),
              static_cast<std::uint32_t>(ERROR_FILENAME_EXCED_RANGE));
}

TEST_F(DirectoriesTest, EnsureTellsWhetherItHadToMakeThem) {
    EXPECT_TRUE(ensureDirectories(path("a\\b")));
    EXPECT_FALSE(ensureDirectories(path("a\\b")));
    EXPECT_FALSE(ensureDirectories(path("a\\b\\")));
    writeFile("file", "");
    EXPECT_EQ(codeThrownBy<vek::FileExistsError>([&] { ensureDirectories(path("file")); }), 183u);
    EXPECT_THROW(ensureDirectories(path("a|b")), vek::FsError);
}

TEST_F(DirectoriesTest, SeveralThreadsMayMakeTheSameDirectories) {
    for (int round = 0; round < 20; ++round) {
        const std::string wanted = path(std::to_string(round) + "\\a\\b\\c\\d");
        std::atomic<int> made = 0;
        std::atomic<int> failed = 0;
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                try {
                    made += ensureDirectories(wanted) ? 1 : 0;
                } catch (const vek::Exception&) {
                    ++failed;
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(made, 1);
        EXPECT_EQ(failed, 0);
    }
}

// Another thread makes the last level as soon as it can, that is behind the first try of
// createDirectories and ahead of its last.
TEST_F(DirectoriesTest, LastLevelMadeMeanwhileIsAsGoodAsOneMadeHere) {
    for (int round = 0; round < 100; ++round) {
        const std::string parent = path(std::to_string(round) + "\\a\\b\\c");
        const std::string wanted = parent + "\\d";
        std::atomic<bool> other = false;
        std::thread thread([&] {
            while (!other) {
                other = CreateDirectoryA(wanted.c_str(), nullptr) != 0 ||
                        GetLastError() == ERROR_ALREADY_EXISTS;
            }
        });
        EXPECT_NO_THROW(createDirectories(wanted));
        thread.join();
    }
}

TEST_F(DirectoriesTest, RemoveTreeRemovesAll) {
    createDirectories(path("t\\a\\b.c\\d"));
    createDirectories(path("t\\empty"));
    createDirectories(path("t\\...dots..x"));
    for (const std::string name :
         {"x", "a\\.hidden", "a\\b.c\\d\\y.z.w", "a\\b.c\\..z", "a\\longest"}) {
        writeFile("t\\" + name, "text");
    }
    const std::string longName(255 - path("t\\a").size(), 'n');
    writeFile("t\\a\\" + longName.substr(0, 200), "text");
    removeTree(path("t"));
    EXPECT_FALSE(isThere("t"));
}

TEST_F(DirectoriesTest, RemoveTreeTakesLongPathsUpToTheSystemsLimit) {
    std::string deep = "t";
    while (path(deep).size() < 225) {
        deep += "\\0123456789";
    }
    createDirectories(path(deep));
    writeFile(deep + "\\" + std::string(258 - path(deep).size(), 'n'), "text");
    EXPECT_FALSE(isThere(deep + "\\" + std::string(259 - path(deep).size(), 'n')));
    removeTree(path("t"));
    EXPECT_FALSE(isThere("t"));
}

TEST_F(DirectoriesTest, RemoveTreeTakesManyEntriesAndATrailingSeparator) {
    createDirectories(path("t"));
    for (int i = 0; i < 500; ++i) {
        writeFile("t\\" + std::to_string(i), "");
    }
    removeTree(path("t\\"));
    EXPECT_FALSE(isThere("t"));
}

TEST_F(DirectoriesTest, RemoveTreeStopsAtAReadOnlyFile) {
    createDirectories(path("t\\a"));
    writeFile("t\\a\\x", "text");
    SetFileAttributesA(path("t\\a\\x").c_str(), FILE_ATTRIBUTE_READONLY);
    try {
        removeTree(path("t"));
        ADD_FAILURE();
    } catch (const vek::FsError& error) {
        EXPECT_EQ(error.osError().code(), 5u);
        EXPECT_EQ(error.path(), path("t\\a\\x"));
    }
    EXPECT_EQ(readFile("t\\a\\x"), "text");
    SetFileAttributesA(path("t\\a\\x").c_str(), FILE_ATTRIBUTE_NORMAL);
    removeTree(path("t"));
    EXPECT_FALSE(isThere("t"));
}

TEST_F(DirectoriesTest, RemoveTreeOfAMissingDirectoryFails) {
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { removeTree(path("none")); }), 3u);
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { removeTree(path("none\\none")); }), 3u);
}

TEST_F(DirectoriesTest, RemoveTreeOfAFileFailsAndLeavesIt) {
    writeFile("file", "text");
    EXPECT_THROW(removeTree(path("file")), vek::FsError);
    EXPECT_EQ(readFile("file"), "text");
}

TEST_F(DirectoriesTest, RemoveTreeRefusesAnEmptyPath) {
    EXPECT_EQ(codeThrownBy<vek::FsError>([] { removeTree(""); }), 3u);
}

TEST_F(DirectoriesTest, RemoveTreeRefusesAZeroByteAndRemovesNothing) {
    createDirectories(path("t\\a"));
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { removeTree(path("t") + std::string("\0x", 2)); }),
              static_cast<std::uint32_t>(ERROR_INVALID_NAME));
    EXPECT_TRUE(isDirectory("t\\a"));
}

// U+FF3C and U+FF1A are similar to a backslash and a colon, which the search returns for them; the
// characters in the middle arrive as "?".
TEST_F(DirectoriesTest, RemoveTreeRefusesNamesThatLeadElsewhere) {
    const struct {
        std::wstring name;
        std::string arrives;
    } rows[] = {{L"..\uFF3Cvictim.txt", "..\\victim.txt"},
                {L"\u65E5\u672C", "??"},
                {L"victim.txt\uFF1As", "victim.txt:s"}};
    if (GetACP() != 1252) {
        GTEST_SKIP() << "of code page 1252";
    }
    for (const auto& row : rows) {
        createDirectories(path("t"));
        writeFile("victim.txt", "text");
        writeFile("t\\victim.txt", "text");
        const std::string directory = path("t\\");
        const std::wstring entry = std::wstring(directory.begin(), directory.end()) + row.name;
        if (!vek::test::makeWideFile(entry)) {
            vek::test::runAgainWithWideNames(path());
            return;
        }
        try {
            removeTree(path("t"));
            ADD_FAILURE() << row.arrives;
        } catch (const vek::FsError& error) {
            EXPECT_EQ(error.osError().code(), static_cast<std::uint32_t>(ERROR_INVALID_NAME));
            EXPECT_EQ(error.path(), directory + row.arrives);
        }
        EXPECT_EQ(readFile("victim.txt"), "text");
        EXPECT_NE(GetFileAttributesW(entry.c_str()), INVALID_FILE_ATTRIBUTES);
        DeleteFileW(entry.c_str());
        removeTree(path("t"));
    }
}

// Its name is that of a device: the search finds it, and no operation by name reaches it.
TEST_F(DirectoriesTest, RemoveTreeNamesThePathOfWhatItCantRemove) {
    createDirectories(path("t"));
    const HANDLE file = CreateFileA(("\\\\?\\" + path("t\\aux")).c_str(), GENERIC_WRITE, 0, nullptr,
                                    CREATE_NEW, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE) << GetLastError();
    CloseHandle(file);
    try {
        removeTree(path("t"));
        ADD_FAILURE();
    } catch (const vek::FsError& error) {
        EXPECT_EQ(error.path(), path("t\\aux"));
    }
    DeleteFileA(("\\\\?\\" + path("t\\aux")).c_str());
}

// What a link leads to stays. See DirectoryLink for what becomes of the link itself.
TEST_F(DirectoriesTest, RemoveTreeNeverFollowsALink) {
    createDirectories(path("target\\sub"));
    writeFile("target\\sub\\file", "text");
    createDirectories(path("t\\a\\b"));
    const vek::test::DirectoryLink link(path("t\\a\\b"), "link", "../../../target");
    try {
        removeTree(path("t"));
        EXPECT_FALSE(isThere("t"));
    } catch (const vek::FsError& error) {
        EXPECT_EQ(error.path(), link.path());
        EXPECT_EQ(error.osError().code(), static_cast<std::uint32_t>(ERROR_DIR_NOT_EMPTY));
    }
    EXPECT_EQ(readFile("target\\sub\\file"), "text");
}

TEST_F(DirectoriesTest, RemoveTreeOfALinkDoesNotFollowItEither) {
    createDirectories(path("target\\sub"));
    writeFile("target\\sub\\file", "text");
    for (const std::string name : {"link", "link\\"}) {
        const vek::test::DirectoryLink link(path(), "link", "target");
        try {
            removeTree(path(name));
            EXPECT_FALSE(link.isThere());
        } catch (const vek::FsError& error) {
            EXPECT_EQ(error.path(), link.path());
            EXPECT_EQ(error.osError().code(), static_cast<std::uint32_t>(ERROR_DIR_NOT_EMPTY));
        }
        EXPECT_EQ(readFile("target\\sub\\file"), "text") << name;
    }
}

}  // namespace
