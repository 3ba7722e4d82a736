#include "vek/fs/temporary.h"

#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/thrown.h"
#include "tests/vek/temporary_directory.h"
#include "vek/exception.h"
#include "vek/fs/current_directory.h"
#include "vek/fs/directories.h"
#include "vek/fs/operations.h"
#include "vek/fs/path_text.h"
#include "vek/fs/special_folders.h"

namespace {

using vek::fs::makeTemporary;
using vek::fs::makeTemporaryDirectory;
using vek::fs::StreamFile;
using vek::fs::Whence;
using vek::test::codeThrownBy;

class TemporaryTest : public vek::test::TemporaryDirectoryTest {};

TEST_F(TemporaryTest, FileStandsBesideItsFinalName) {
    std::string name = path("settings.ini");
    StreamFile file = makeTemporary(name);
    EXPECT_NE(name, path("settings.ini"));
    EXPECT_TRUE(name.starts_with(path("set"))) << name;
    EXPECT_FALSE(vek::fs::exists(path("settings.ini")));
    EXPECT_EQ(file.write("text", 4), 4u);
    char byte = 0;
    file.seek(1, Whence::begin);
    EXPECT_EQ(file.read(&byte, 1), 1u);
    EXPECT_EQ(byte, 'e');
    file.close();
    EXPECT_EQ(readFile(name.substr(path().size() + 1)), "text");
}

TEST_F(TemporaryTest, EveryFileIsANewOne) {
    std::string first = path("x");
    std::string second = path("x");
    makeTemporary(first);
    makeTemporary(second);
    EXPECT_NE(first, second);
    EXPECT_TRUE(vek::fs::isRegularFile(first));
    EXPECT_TRUE(vek::fs::isRegularFile(second));
}

TEST_F(TemporaryTest, NameAloneIsMadeAbsolute) {
    const std::string before = vek::fs::currentDirectory();
    vek::fs::changeDirectory(path());
    std::string name = "abc.txt";
    makeTemporary(name);
    std::string none;
    makeTemporary(none);
    vek::fs::changeDirectory(before);
    EXPECT_TRUE(name.starts_with(path("abc"))) << name;
    EXPECT_TRUE(none.starts_with(path() + "\\")) << none;
    EXPECT_TRUE(vek::fs::isRegularFile(name));
}

TEST_F(TemporaryTest, SlashIsADirectoryPartToo) {
    vek::fs::createDirectory(path("sub"));
    const std::string before = vek::fs::currentDirectory();
    vek::fs::changeDirectory(path());
    std::string name = "sub/abc";
    makeTemporary(name);
    EXPECT_FALSE(vek::fs::isEmptyDirectory("sub")) << name;
    vek::fs::changeDirectory(before);
}

TEST_F(TemporaryTest, RootOfADriveIsADirectoryPart) {
    std::string name = "C:\\vek.txt";
    makeTemporary(name).close();
    EXPECT_TRUE(name.starts_with("C:\\vek")) << name;
    vek::fs::removeFile(name);
}

TEST_F(TemporaryTest, FileThatCantBeMadeIsAnFsError) {
    std::string name = path("none\\x");
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { makeTemporary(name); }),
              static_cast<std::uint32_t>(ERROR_DIRECTORY));
    EXPECT_EQ(name, path("none\\x"));
    std::string zero = path("x") + std::string("\0y", 2);
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { makeTemporary(zero); }), 123u);
    std::string tooLong = path(std::string(300, 'a') + "\\x");
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { makeTemporary(tooLong); }),
              static_cast<std::uint32_t>(ERROR_BUFFER_OVERFLOW));
    std::string wild = path("*?|");
    EXPECT_THROW(makeTemporary(wild), vek::FsError);
    EXPECT_TRUE(vek::fs::isEmptyDirectory(path()));
}

TEST_F(TemporaryTest, DirectoryStandsAmongTheTemporaryFiles) {
    const std::string first = makeTemporaryDirectory("base");
    const std::string second = makeTemporaryDirectory("base");
    EXPECT_TRUE(first.starts_with(vek::fs::temporaryDirectory() + "\\bas")) << first;
    EXPECT_NE(first, second);
    EXPECT_TRUE(vek::fs::stat(first).isDirectory());
    EXPECT_TRUE(vek::fs::isEmptyDirectory(first));
    vek::fs::removeDirectory(first);
    vek::fs::removeDirectory(second);
}

// Whose name is taken between the removal of the file and the making of the directory makes up
// another one.
TEST_F(TemporaryTest, SeveralThreadsGetDirectoriesOfTheirOwn) {
    std::mutex lock;
    std::vector<std::string> made;
    std::vector<std::string> failures;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                try {
                    std::string directory = makeTemporaryDirectory("base");
                    const std::lock_guard guard(lock);
                    made.push_back(std::move(directory));
                } catch (const vek::Exception& error) {
                    const std::lock_guard guard(lock);
                    failures.push_back(error.what());
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failures, std::vector<std::string>());
    EXPECT_EQ(std::set<std::string>(made.begin(), made.end()).size(), 200u);
    for (const std::string& directory : made) {
        vek::fs::removeDirectory(directory);
    }
}

TEST_F(TemporaryTest, DirectoryThatCantBeMadeIsAnFsError) {
    EXPECT_EQ(codeThrownBy<vek::FsError>([] { makeTemporaryDirectory("vek-none\\x"); }),
              static_cast<std::uint32_t>(ERROR_DIRECTORY));
    EXPECT_EQ(codeThrownBy<vek::FsError>([] { makeTemporaryDirectory(std::string("a\0b", 3)); }),
              123u);
}

}  // namespace
