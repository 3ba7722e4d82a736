#include "vek/pathinfo.h"

#include <gtest/gtest.h>

#include "tests/vek/temporary_directory.h"
#include "vek/base/host_name.h"
#include "vek/fs/program_path.h"

namespace {

using vek::PathInfo;

std::string windowsDirectory() {
    char buffer[260] = {};
    GetWindowsDirectoryA(buffer, sizeof buffer);
    return buffer;
}

// The what() of what `f` throws, which must be a PathInfo::Error.
template <class F>
std::string errorOf(F f) {
    try {
        f();
    } catch (const PathInfo::Error& error) {
        return error.what();
    }
    return "nothing thrown";
}

class PathInfoTest : public vek::test::TemporaryDirectoryTest {
  protected:
    // The value of `key` in a table that holds `content`.
    std::string valueOf(const std::string& content, const std::string& key) {
        writeFile("pathinfo.ini", content);
        return PathInfo(path("pathinfo.ini")).get(key, "");
    }
};

TEST_F(PathInfoTest, BuiltInKeysStandWithoutAFile) {
    const PathInfo table;
    EXPECT_EQ(table.get("SystemRoot", ""), windowsDirectory());
    EXPECT_EQ(table.get("WINDIR", ""), windowsDirectory());
    std::string host = "hostname";
    try {
        host = vek::hostName(0);
    } catch (const vek::OsError&) {
        // A long name: the literal stands.
    }
    EXPECT_EQ(table.get("HOSTNAME", ""), host);
    EXPECT_EQ(table.get("COMPUTERNAME", ""), host);
}

TEST_F(PathInfoTest, FileIsJoinedByABackslash) {
    writeFile("pathinfo.ini", "QadDataDir = D:\\data\n");
    const PathInfo table(path("pathinfo.ini"));
    EXPECT_EQ(table.get("qaddatadir", "tolmar.exe"), "D:\\data\\tolmar.exe");
    EXPECT_EQ(table.get("QADDATADIR", ""), "D:\\data");
}

TEST_F(PathInfoTest, ReferencesAreExpandedInAllThreeFormsAndAnyCase) {
    const std::string expected = windowsDirectory() + "\\data";
    EXPECT_EQ(valueOf("k=%WINDIR%\\data\\\n", "k"), expected);
    EXPECT_EQ(valueOf("k=${WinDir}\\data\n", "k"), expected);
    EXPECT_EQ(valueOf("k={windir}\\data\n", "k"), expected);
    EXPECT_EQ(valueOf("k={WINDIR}{SystemRoot}\n", "k"), windowsDirectory() + windowsDirectory());
}

TEST_F(PathInfoTest, ReferencesToEarlierLinesAreExpandedAndToLaterOnesAreNot) {
    EXPECT_EQ(valueOf("a=1\nb={a}2\n", "b"), "12");
    EXPECT_EQ(valueOf("b={a}2\na=1\n", "b"), "{a}2");
    EXPECT_EQ(valueOf("b={nobody}\n", "b"), "{nobody}");
    EXPECT_EQ(valueOf("b=%a\na=1\n", "b"), "%a");
}

TEST_F(PathInfoTest, InsertedTextIsOpenToKeysLaterInByteOrderOnly) {
    // While c is set, a holds "{x}" and x is set: a comes ahead of x.
    EXPECT_EQ(valueOf("a={x}\nx=1\nc={a}\n", "c"), "1");
    // y comes behind x, so what it brings in stays.
    EXPECT_EQ(valueOf("y={x}\nx=1\nc={y}\n", "c"), "{x}");
}

TEST_F(PathInfoTest, ValueNeverMatchesItself) {
    PathInfo table;
    table.set("a", "{a}");
    table.set("b", "{a}{a}");
    EXPECT_EQ(table.get("b", ""), "{a}{a}");
}

TEST_F(PathInfoTest, OneSeparatorAtTheEndIsRemoved) {
    EXPECT_EQ(valueOf("k=C:\\d\\\n", "k"), "C:\\d");
    EXPECT_EQ(valueOf("k=C:\\d/\n", "k"), "C:\\d");
    EXPECT_EQ(valueOf("k=C:\\d\\\\\n", "k"), "C:\\d\\");
    EXPECT_EQ(valueOf("k=/\n", "k"), "");
}

TEST_F(PathInfoTest, LastOfTwoLinesCounts) {
    EXPECT_EQ(valueOf("k=1\nK=2\n", "k"), "2");
    EXPECT_EQ(valueOf("k=1\nk=2\nK={k}3\n", "k"), "{k}3");
}

TEST_F(PathInfoTest, OldSpellingIsLeftForExpansionOnly) {
    PathInfo table;
    table.set("Key", "old");
    table.set("KEY", "new");
    EXPECT_EQ(table.get("key", ""), "new");
    // "KEY" comes ahead of "Key" in byte order and matches first, in any case.
    table.set("user", "{key}");
    EXPECT_EQ(table.get("user", ""), "new");
    // The other way round the old value is what a reference brings in.
    table.set("TOOL", "old");
    table.set("tool", "new");
    EXPECT_EQ(table.get("TOOL", ""), "new");
    table.set("user", "{tool}%Tool%${TOOL}");
    EXPECT_EQ(table.get("user", ""), "oldoldold");
}

TEST_F(PathInfoTest, UnknownKeyIsNamedAsGiven) {
    const PathInfo table;
    EXPECT_EQ(errorOf([&] { table.get("NoSuchKey", "tolmar.exe"); }),
              "PathInfo Error: key \"NoSuchKey\" not found (1)");
}

TEST_F(PathInfoTest, MissingFileIsTold) {
    EXPECT_EQ(errorOf([&] { PathInfo table(path("none.ini")); }),
              std::string("PathInfo Error: failed to load config file: ") +
                  vek::NoSuchFileError(path("none.ini"), 2).what());
}

TEST_F(PathInfoTest, DirectoryInPlaceOfTheFileIsTold) {
    EXPECT_EQ(errorOf([&] { PathInfo table(path()); }),
              std::string("PathInfo Error: failed to load config file: ") +
                  vek::FileAccessError(path(), 5).what());
}

TEST_F(PathInfoTest, LockedFileIsTold) {
    writeFile("pathinfo.ini", "a=1\n");
    const HANDLE holder = CreateFileA(path("pathinfo.ini").c_str(), GENERIC_READ, 0, nullptr,
                                      OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(errorOf([&] { PathInfo table(path("pathinfo.ini")); }),
              std::string("PathInfo Error: failed to load config file: ") +
                  vek::FsError(path("pathinfo.ini"), ERROR_SHARING_VIOLATION).what());
    CloseHandle(holder);
}

TEST_F(PathInfoTest, EmptyFileLeavesTheBuiltInKeys) {
    EXPECT_EQ(valueOf("", "WINDIR"), windowsDirectory());
}

TEST_F(PathInfoTest, FilesOfOtherMakeAreTaken) {
    EXPECT_EQ(valueOf("a=1\r\nb=2", "b"), "2");
    EXPECT_EQ(valueOf("Key=1\nKEY=2\nkey=3\n", "key"), "3");
    const std::string longValue(1 << 20, 'v');
    EXPECT_EQ(valueOf("a=" + longValue + "\n", "a"), longValue);
}

TEST_F(PathInfoTest, RelativePathIsWhatLiesBelow) {
    PathInfo table;
    table.set("base", "C:\\Base\\Dir");
    EXPECT_EQ(table.relativePath("C:\\Base\\Dir\\Sub\\File", "base"), "Sub\\File");
    EXPECT_EQ(table.relativePath("c:/base/DIR/File", "BASE"), "File");
    EXPECT_EQ(table.relativePath("C:\\Base\\Directory\\x", "base"), "C:\\Base\\Directory\\x");
    EXPECT_EQ(table.relativePath("C:\\Base\\Dir", "base"), "C:\\Base\\Dir");
    EXPECT_EQ(errorOf([&] { table.relativePath("x", "none"); }),
              "PathInfo Error: key \"none\" not found (1)");
}

TEST_F(PathInfoTest, SingletonIsMadeOnceAndStandsAfterAFailedLoad) {
    const std::string file = vek::programDirectory() + "/pathinfo.ini";
    ASSERT_EQ(GetFileAttributesA(file.c_str()), INVALID_FILE_ATTRIBUTES)
        << "a pathinfo.ini stands beside the test program";
    EXPECT_EQ(errorOf([] { PathInfo::instance(); }),
              std::string("PathInfo Error: failed to load config file: ") +
                  vek::NoSuchFileError(file, 2).what());
    PathInfo* stored = nullptr;
    EXPECT_NO_THROW(stored = &PathInfo::instance());
    EXPECT_EQ(stored->get("WINDIR", ""), windowsDirectory());
    EXPECT_EQ(PathInfo::lookup("WINDIR", "x"), windowsDirectory() + "\\x");
    PathInfo::destroy();
    EXPECT_NE(errorOf([] { PathInfo::instance(); }), "nothing thrown");
    PathInfo::destroy();
    PathInfo::destroy();
}

}  // namespace
