#include "vek/os/file.h"

#include <array>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "tests/vek/os/test_support.h"
#include "tests/vek/temporary_directory.h"

namespace {

constexpr DWORD noError = 12345;

const std::string veryLong(100000, 'n');

class OsFile : public vek::test::TemporaryDirectoryTest {
  protected:
    bool exists(const std::string& name) const {
        return GetFileAttributesA(path(name).c_str()) != INVALID_FILE_ATTRIBUTES;
    }
    void makeDirectory(const std::string& name) const {
        EXPECT_NE(CreateDirectoryA(path(name).c_str(), nullptr), 0);
    }
    // The time of the last write, in ticks of 100 ns since 1601.
    void setWriteTime(const std::string& name, std::uint64_t ticks) const {
        const HANDLE file =
            CreateFileA(path(name).c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        const FILETIME time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
        EXPECT_NE(SetFileTime(file, nullptr, nullptr, &time), 0);
        CloseHandle(file);
    }
    // A file of that many bytes that takes no room.
    void makeSparse(const std::string& name, std::int64_t size) const {
        const HANDLE file =
            CreateFileA(path(name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
        LARGE_INTEGER end = {};
        end.QuadPart = size;
        EXPECT_NE(SetFilePointerEx(file, end, nullptr, FILE_BEGIN), 0);
        EXPECT_NE(SetEndOfFile(file), 0);
        CloseHandle(file);
    }
};

using DeleteFileTest = OsFile;
using CopyFileTest = OsFile;
using MoveFileTest = OsFile;
using PathExists = OsFile;
using IsDirectory = OsFile;
using SetFileTimeTest = OsFile;
using FileSize = OsFile;
using FileTimes = OsFile;
using Find = OsFile;

TEST_F(DeleteFileTest, RemovesTheFile) {
    writeFile("file", "x");
    EXPECT_EQ(vek::os::deleteFile(path("file").c_str()), 1);
    EXPECT_FALSE(exists("file"));
}

TEST_F(DeleteFileTest, FailsWithTheSystemsError) {
    makeDirectory("directory");
    writeFile("read-only", "x");
    SetFileAttributesA(path("read-only").c_str(), FILE_ATTRIBUTE_READONLY);
    const struct {
        std::string path;
        DWORD error;
    } rows[] = {{path("missing"), ERROR_FILE_NOT_FOUND},
                {path("missing\\file"), ERROR_PATH_NOT_FOUND},
                {path("directory"), ERROR_ACCESS_DENIED},
                {path("read-only"), ERROR_ACCESS_DENIED}};
    for (const auto& row : rows) {
        SetLastError(noError);
        EXPECT_EQ(vek::os::deleteFile(row.path.c_str()), 0) << row.path;
        EXPECT_EQ(GetLastError(), row.error) << row.path;
    }
    SetFileAttributesA(path("read-only").c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(vek::os::deleteFile(nullptr), 0);
    EXPECT_EQ(vek::os::deleteFile(""), 0);
    EXPECT_EQ(vek::os::deleteFile(path(veryLong).c_str()), 0);
}

TEST_F(CopyFileTest, ReplacesTheTargetUnlessToldNotTo) {
    writeFile("from", "new");
    EXPECT_EQ(vek::os::copyFile(path("from").c_str(), path("to").c_str(), 1), 1);
    EXPECT_EQ(readFile("to"), "new");
    writeFile("to", "old");
    SetLastError(noError);
    EXPECT_EQ(vek::os::copyFile(path("from").c_str(), path("to").c_str(), 1), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_EXISTS));
    EXPECT_EQ(vek::os::copyFile(path("from").c_str(), path("to").c_str(), -1), 0);
    EXPECT_EQ(readFile("to"), "old");
    EXPECT_EQ(vek::os::copyFile(path("from").c_str(), path("to").c_str(), 0), 1);
    EXPECT_EQ(readFile("to"), "new");
    EXPECT_EQ(readFile("from"), "new");
}

TEST_F(CopyFileTest, FailsWithTheSystemsError) {
    SetLastError(noError);
    EXPECT_EQ(vek::os::copyFile(path("missing").c_str(), path("to").c_str(), 0), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_FALSE(exists("to"));
    writeFile("from", "x");
    EXPECT_EQ(vek::os::copyFile(nullptr, path("to").c_str(), 0), 0);
    EXPECT_EQ(vek::os::copyFile(path("from").c_str(), nullptr, 0), 0);
    EXPECT_EQ(vek::os::copyFile(path("from").c_str(), "", 0), 0);
    EXPECT_EQ(vek::os::copyFile(path("from").c_str(), path(veryLong).c_str(), 0), 0);
}

TEST_F(MoveFileTest, RenamesFilesAndDirectories) {
    writeFile("from", "x");
    EXPECT_EQ(vek::os::moveFile(path("from").c_str(), path("to").c_str()), 1);
    EXPECT_FALSE(exists("from"));
    EXPECT_EQ(readFile("to"), "x");
    makeDirectory("directory");
    EXPECT_EQ(vek::os::moveFile(path("directory").c_str(), path("renamed").c_str()), 1);
    EXPECT_TRUE(exists("renamed"));
}

TEST_F(MoveFileTest, FailsWithTheSystemsError) {
    writeFile("from", "new");
    writeFile("to", "old");
    SetLastError(noError);
    EXPECT_EQ(vek::os::moveFile(path("from").c_str(), path("to").c_str()), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    EXPECT_EQ(readFile("to"), "old");
    SetLastError(noError);
    EXPECT_EQ(vek::os::moveFile(path("missing").c_str(), path("other").c_str()), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(vek::os::moveFile(nullptr, path("other").c_str()), 0);
    EXPECT_EQ(vek::os::moveFile(path("from").c_str(), nullptr), 0);
    EXPECT_EQ(vek::os::moveFile(path("from").c_str(), path(veryLong).c_str()), 0);
    EXPECT_EQ(readFile("from"), "new");
}

TEST_F(PathExists, TellsOfFilesAndDirectories) {
    writeFile("file", "");
    EXPECT_EQ(vek::os::pathExists(path("file").c_str()), 1);
    EXPECT_EQ(vek::os::pathExists(path().c_str()), 1);
    EXPECT_EQ(vek::os::pathExists(path("missing").c_str()), 0);
    EXPECT_EQ(vek::os::pathExists(path("missing\\file").c_str()), 0);
    EXPECT_EQ(vek::os::pathExists(nullptr), 0);
    EXPECT_EQ(vek::os::pathExists(""), 0);
    EXPECT_EQ(vek::os::pathExists(path("*").c_str()), 0);
    EXPECT_EQ(vek::os::pathExists(path(veryLong).c_str()), 0);
}

TEST_F(IsDirectory, GivesTheBitOfTheMode) {
    writeFile("file", "");
    EXPECT_EQ(vek::os::isDirectory(path().c_str()), 0x4000);
    EXPECT_EQ(vek::os::isDirectory("."), 0x4000);
    EXPECT_EQ(vek::os::isDirectory(path("file").c_str()), 0);
    EXPECT_EQ(vek::os::isDirectory(path("missing").c_str()), 0);
    EXPECT_EQ(vek::os::isDirectory(nullptr), 0);
    EXPECT_EQ(vek::os::isDirectory(""), 0);
    EXPECT_EQ(vek::os::isDirectory(path(veryLong).c_str()), 0);
}

TEST_F(SetFileTimeTest, SetsBothTimes) {
    writeFile("file", "x");
    // The last two are beyond 2038, where 31 bits end. (Wine keeps times up to 2106.)
    for (const __time64_t seconds :
         {1000000000LL, 86400LL, 0x7FFFFFFFLL, 0x80000000LL, 0xE0000000LL}) {
        EXPECT_EQ(vek::os::setFileTime(path("file").c_str(), seconds), 1);
        __time64_t access = 0;
        __time64_t modification = 0;
        EXPECT_EQ(vek::os::fileTimes(path("file").c_str(), &access, &modification), 1);
        EXPECT_EQ(access, seconds);
        EXPECT_EQ(modification, seconds);
    }
}

TEST_F(SetFileTimeTest, FailsForWhatIsNoFile) {
    EXPECT_EQ(vek::os::setFileTime(path("missing").c_str(), 1), 0);
    EXPECT_EQ(vek::os::setFileTime(path().c_str(), 1), 0);
    EXPECT_EQ(vek::os::setFileTime(nullptr, 1), 0);
    EXPECT_EQ(vek::os::setFileTime("", 1), 0);
    EXPECT_EQ(vek::os::setFileTime(path(veryLong).c_str(), 1), 0);
}

TEST_F(FileSize, IsThatOfTheFile) {
    std::uint32_t size = 77;
    writeFile("empty", "");
    EXPECT_EQ(vek::os::fileSize(path("empty").c_str(), &size), 1);
    EXPECT_EQ(size, 0u);
    writeFile("file", std::string(70000, 'x'));
    EXPECT_EQ(vek::os::fileSize(path("file").c_str(), &size), 1);
    EXPECT_EQ(size, 70000u);
    EXPECT_EQ(vek::os::fileSize(path("file").c_str(), nullptr), 1);
    makeSparse("large", 3000000000);
    EXPECT_EQ(vek::os::fileSize(path("large").c_str(), &size), 1);
    EXPECT_EQ(size, 3000000000u);
}

TEST_F(FileSize, IsZeroWhereThereIsNoFile) {
    for (const std::string& missing : {path("missing"), std::string(), path(veryLong)}) {
        std::uint32_t size = 77;
        EXPECT_EQ(vek::os::fileSize(missing.c_str(), &size), 0);
        EXPECT_EQ(size, 0u);
    }
    std::uint32_t size = 77;
    EXPECT_EQ(vek::os::fileSize(nullptr, &size), 0);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(vek::os::fileSize(path("missing").c_str(), nullptr), 0);
}

TEST_F(FileTimes, StoresWhatIsAskedFor) {
    writeFile("file", "x");
    const __time64_t now = std::time(nullptr);
    __time64_t access = 0;
    __time64_t modification = 0;
    EXPECT_EQ(vek::os::fileTimes(path("file").c_str(), &access, nullptr), 1);
    EXPECT_EQ(vek::os::fileTimes(path("file").c_str(), nullptr, &modification), 1);
    EXPECT_EQ(vek::os::fileTimes(path("file").c_str(), nullptr, nullptr), 1);
    EXPECT_NEAR(static_cast<double>(access), static_cast<double>(now), 60);
    EXPECT_NEAR(static_cast<double>(modification), static_cast<double>(now), 60);
}

TEST_F(FileTimes, TellsTheTwoApart) {
    writeFile("file", "x");
    ASSERT_EQ(vek::os::setFileTime(path("file").c_str(), 1000000000), 1);
    setWriteTime("file", 116444736000000000 + 20000000);
    __time64_t access = 0;
    __time64_t modification = 0;
    EXPECT_EQ(vek::os::fileTimes(path("file").c_str(), &access, &modification), 1);
    EXPECT_EQ(access, 1000000000);
    EXPECT_EQ(modification, 2);
}

TEST_F(FileTimes, OfWhatIsMissingAreLeftAlone) {
    for (const std::string& missing : {path("missing"), std::string(), path(veryLong)}) {
        __time64_t access = 77;
        __time64_t modification = 78;
        EXPECT_EQ(vek::os::fileTimes(missing.c_str(), &access, &modification), 0);
        EXPECT_EQ(access, 77);
        EXPECT_EQ(modification, 78);
    }
    EXPECT_EQ(vek::os::fileTimes(nullptr, nullptr, nullptr), 0);
}

TEST_F(Find, GivesEachEntryWithItsKindTimeAndSize) {
    writeFile("a.txt", "four");
    writeFile("b.txt", "");
    writeFile("other", "x");
    makeDirectory("c.txt");
    setWriteTime("a.txt", 116444736000000000 + 12345670000000);
    struct Entry {
        int kind = 0;
        std::int32_t time = -2;
        std::uint32_t size = 77;
    };
    std::map<std::string, Entry> found;
    std::array<char, 260> name = {};
    Entry entry;
    HANDLE find = nullptr;
    ASSERT_EQ(vek::os::findFirst(&find, path("*.txt").c_str(), name.data(), &entry.kind,
                                 &entry.time, &entry.size),
              1);
    do {
        found[name.data()] = entry;
        entry = {};
    } while (vek::os::findNext(find, name.data(), &entry.kind, &entry.time, &entry.size) != 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_MORE_FILES));
    EXPECT_EQ(entry.kind, 0) << "the end stored something";
    EXPECT_EQ(vek::os::findClose(find), 1);
    ASSERT_EQ(found.size(), 3u);
    EXPECT_EQ(found.at("a.txt").kind, 1);
    EXPECT_EQ(found.at("a.txt").time, 1234567);
    EXPECT_EQ(found.at("a.txt").size, 4u);
    EXPECT_EQ(found.at("b.txt").kind, 1);
    EXPECT_EQ(found.at("b.txt").size, 0u);
    EXPECT_EQ(found.at("c.txt").kind, 2);
}

TEST_F(Find, TimeIsMinusOneWhereItDoesNotFit) {
    constexpr std::uint64_t ticksTo1970 = 116444736000000000;
    constexpr std::uint64_t second = 10000000;
    const struct {
        std::uint64_t ticks;
        std::int32_t time;
    } rows[] = {
        {ticksTo1970, 0},
        {ticksTo1970 + second - 1, 0},
        {ticksTo1970 + second, 1},
        {ticksTo1970 - 2 * second, -2},
        {ticksTo1970 + 0x7FFFFFFF * second, 0x7FFFFFFF},
        {ticksTo1970 + 0x80000000 * second, -1},
        {ticksTo1970 + 0x100000005 * second, -1},
    };
    writeFile("file", "x");
    for (const auto& row : rows) {
        setWriteTime("file", row.ticks);
        HANDLE find = nullptr;
        std::int32_t time = 77;
        ASSERT_EQ(vek::os::findFirst(&find, path("file").c_str(), nullptr, nullptr, &time, nullptr),
                  1);
        EXPECT_EQ(time, row.time);
        EXPECT_EQ(vek::os::findClose(find), 1);
    }
}

TEST_F(Find, SizeIsItsLowBits) {
    makeSparse("large", (std::int64_t{1} << 32) + 5);
    HANDLE find = nullptr;
    std::uint32_t size = 77;
    ASSERT_EQ(vek::os::findFirst(&find, path("large").c_str(), nullptr, nullptr, nullptr, &size),
              1);
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(vek::os::findClose(find), 1);
}

TEST_F(Find, LongestNameFits) {
    const std::string longest(255 - path("").size(), 'l');
    writeFile(longest, "");
    HANDLE find = nullptr;
    std::array<char, 261> name;
    name.fill('x');
    ASSERT_EQ(vek::os::findFirst(&find, path("l*").c_str(), name.data(), nullptr, nullptr, nullptr),
              1);
    EXPECT_EQ(name.data(), longest);
    EXPECT_EQ(name[260], 'x');
    EXPECT_EQ(vek::os::findClose(find), 1);
}

TEST_F(Find, DirectoriesOfEveryDirectoryAreEntries) {
    HANDLE find = nullptr;
    std::array<char, 260> name = {};
    int kind = 0;
    ASSERT_EQ(vek::os::findFirst(&find, path("*").c_str(), name.data(), &kind, nullptr, nullptr),
              1);
    EXPECT_STREQ(name.data(), ".");
    EXPECT_EQ(kind, 2);
    ASSERT_EQ(vek::os::findNext(find, name.data(), nullptr, nullptr, nullptr), 1);
    EXPECT_STREQ(name.data(), "..");
    EXPECT_EQ(vek::os::findNext(find, name.data(), nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(vek::os::findClose(find), 1);
}

TEST_F(Find, NothingFoundIsTheSystemsErrorAndStoresNothing) {
    const struct {
        std::string pattern;
        DWORD error;
    } rows[] = {{path("*.none"), ERROR_FILE_NOT_FOUND}, {path("missing\\*"), ERROR_PATH_NOT_FOUND}};
    for (const auto& row : rows) {
        HANDLE find = nullptr;
        std::array<char, 260> name = {'x', '\0'};
        int kind = 77;
        std::int32_t time = 78;
        std::uint32_t size = 79;
        SetLastError(noError);
        EXPECT_EQ(vek::os::findFirst(&find, row.pattern.c_str(), name.data(), &kind, &time, &size),
                  0);
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(find, INVALID_HANDLE_VALUE);
        EXPECT_STREQ(name.data(), "x");
        EXPECT_EQ(kind, 77);
        EXPECT_EQ(time, 78);
        EXPECT_EQ(size, 79u);
    }
}

TEST_F(Find, HostilePatternsFindNothing) {
    for (const std::string& pattern : {std::string(), path(veryLong)}) {
        HANDLE find = nullptr;
        EXPECT_EQ(vek::os::findFirst(&find, pattern.c_str(), nullptr, nullptr, nullptr, nullptr),
                  0);
        EXPECT_EQ(find, INVALID_HANDLE_VALUE);
    }
    HANDLE find = nullptr;
    EXPECT_EQ(vek::os::findFirst(&find, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(find, INVALID_HANDLE_VALUE);
}

TEST_F(Find, NullOutputMakesNoSystemCall) {
    SetLastError(noError);
    EXPECT_EQ(vek::os::findFirst(nullptr, path("*").c_str(), nullptr, nullptr, nullptr, nullptr),
              0);
    EXPECT_EQ(GetLastError(), noError);
}

TEST_F(Find, BadSearchIsTheSystemsError) {
    SetLastError(noError);
    EXPECT_EQ(vek::os::findNext(INVALID_HANDLE_VALUE, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    SetLastError(noError);
    EXPECT_EQ(vek::os::findClose(INVALID_HANDLE_VALUE), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
}

// As the other way to ask for it tells.
std::int64_t positionBySeeking(HANDLE file) {
    LARGE_INTEGER position = {};
    return SetFilePointerEx(file, position, &position, FILE_CURRENT) != 0 ? position.QuadPart : -1;
}

TEST_F(OsFile, PositionIsWhereTheNextByteGoes) {
    const HANDLE file = CreateFileA(path("x").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_EQ(vek::os::filePosition(file), 0);
    for (const std::int64_t expected : {std::int64_t{3}, std::int64_t{5'000'000'000}}) {
        LARGE_INTEGER position;
        position.QuadPart = expected;
        EXPECT_NE(SetFilePointerEx(file, position, nullptr, FILE_BEGIN), 0);
        EXPECT_EQ(vek::os::filePosition(file), expected);
        EXPECT_EQ(positionBySeeking(file), expected);
    }
    DWORD written = 0;
    EXPECT_NE(WriteFile(file, "four", 4, &written, nullptr), 0);
    EXPECT_EQ(vek::os::filePosition(file), 5'000'000'004);
    CloseHandle(file);
}

TEST_F(OsFile, WhatHasNoPositionGivesMinusOne) {
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    ASSERT_NE(CreatePipe(&readEnd, &writeEnd, nullptr, 0), 0);
    EXPECT_EQ(vek::os::filePosition(readEnd), -1);
    EXPECT_EQ(vek::os::filePosition(writeEnd), -1);
    CloseHandle(readEnd);
    CloseHandle(writeEnd);
    EXPECT_EQ(vek::os::filePosition(INVALID_HANDLE_VALUE), -1);
    EXPECT_EQ(vek::os::filePosition(nullptr), -1);
}

TEST_F(OsFile, PositionOfADeviceIsThatOfASeek) {
    const HANDLE device = CreateFileA("NUL", GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(device, INVALID_HANDLE_VALUE);
    EXPECT_EQ(vek::os::filePosition(device), positionBySeeking(device));
    DWORD written = 0;
    EXPECT_NE(WriteFile(device, "four", 4, &written, nullptr), 0);
    EXPECT_EQ(vek::os::filePosition(device), positionBySeeking(device));
    CloseHandle(device);
}

}  // namespace
