#include "vek/pathinfo.h"

#include <chrono>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/processor_time.h"
#include "tests/vek/temporary_directory.h"
#include "vek/base/host_name.h"
#include "vek/base/text.h"
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
        // A long name: the literal is used.
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
    // While c is set, a holds "{x}" and x is set: a comes before x.
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
    // "KEY" comes before "Key" in byte order and matches first, in any case.
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

// The table as its description says it, in the simplest form.
class SimpleTable {
  public:
    void set(const std::string& key, const std::string& value) {
        std::string expanded = value;
        for (const auto& [known, replacement] : values) {
            for (const std::string& form :
                 {"%" + known + "%", "${" + known + "}", "{" + known + "}"}) {
                replaceAnyCase(expanded, form, replacement);
            }
        }
        if (!expanded.empty() && (expanded.back() == '/' || expanded.back() == '\\')) {
            expanded.pop_back();
        }
        values[key] = expanded;
        spelled[lowered(key)] = key;
    }

    const std::string& get(const std::string& key) const {
        return values.at(spelled.at(lowered(key)));
    }

  private:
    static std::string lowered(std::string text) { return vek::toLower(text); }

    static void replaceAnyCase(std::string& text, const std::string& form, const std::string& by) {
        std::size_t at = 0;
        while ((at = lowered(text).find(lowered(form), at)) != std::string::npos) {
            text.replace(at, form.size(), by);
            at += by.size();
        }
    }

    std::map<std::string, std::string> values;
    std::map<std::string, std::string> spelled;
};

TEST_F(PathInfoTest, ValuesAreThoseOfTheSimpleWay) {
    std::minstd_rand random(1);
    const auto below = [&](unsigned end) { return static_cast<unsigned>(random() % end); };
    const std::vector<std::string> keys = {"a",  "A",  "b", "aB",  "AB", "ab",  "a%b",
                                           "{a", "a}", "$", "x y", "%",  "a}b", "{}"};
    const std::vector<std::string> pieces = {"%",   "{",    "}",    "${",  "/",    "\\", "x",
                                             "%a%", "{aB}", "${b}", "{a}", "%ab%", "{A}"};
    int expanded = 0;
    for (int round = 0; round < 500; ++round) {
        PathInfo table;
        SimpleTable simple;
        for (const char* builtIn : {"HOSTNAME", "COMPUTERNAME", "SystemRoot", "WINDIR"}) {
            simple.set(builtIn, table.get(builtIn, ""));
        }
        std::set<std::string> used;
        for (int line = 0; line < 20; ++line) {
            const std::string& key = keys[below(static_cast<unsigned>(keys.size()))];
            std::string value;
            for (unsigned left = below(7); left > 0; --left) {
                value += below(3) == 0 ? keys[below(static_cast<unsigned>(keys.size()))]
                                       : pieces[below(static_cast<unsigned>(pieces.size()))];
            }
            table.set(key, value);
            simple.set(key, value);
            used.insert(key);
            ASSERT_EQ(table.get(key, ""), simple.get(key)) << value;
            expanded += simple.get(key) != value ? 1 : 0;
            if (simple.get(key).size() > 1000) {
                // Values that refer to each other double with each line.
                break;
            }
        }
        for (const std::string& key : used) {
            ASSERT_EQ(table.get(key, ""), simple.get(key)) << key;
        }
    }
    EXPECT_GT(expanded, 1000);
}

TEST_F(PathInfoTest, ThousandsOfKeysTakeNoTime) {
    std::string content = "key0=C:\\base\n";
    for (int i = 1; i < 4000; ++i) {
        const std::string number = std::to_string(i);
        content += "key" + number + (i % 2 == 0 ? "=%WINDIR%\\" : "={key0}\\") + number + "\n";
    }
    const support::ProcessorTime time;
    EXPECT_EQ(valueOf(content, "key3999"), "C:\\base\\3999");
    // It took 13 seconds when each value was searched for each key.
    EXPECT_LT(time.used(), std::chrono::seconds(5));
}

TEST_F(PathInfoTest, HostileValuesTakeNoTime) {
    const support::ProcessorTime time;
    const std::string many(20000, '{');
    EXPECT_EQ(valueOf("a=1\nb=" + many + "}\n", "b"), many + "}");
    const std::string signs(20000, '%');
    EXPECT_EQ(valueOf("a=1\nb=" + signs + "\n", "b"), signs);
    EXPECT_LT(time.used(), std::chrono::seconds(5));
}

TEST_F(PathInfoTest, Utf16FileIsReportedAsSuch) {
    writeFile("pathinfo.ini", std::string("\xFF\xFE"
                                          "a\0=\0b\0",
                                          8));
    EXPECT_EQ(errorOf([&] { PathInfo table(path("pathinfo.ini")); }),
              "PathInfo Error: failed to load config file: File system error at location: \"" +
                  path("pathinfo.ini") +
                  "\": The file is in UTF-16. Save it in the system's ANSI code page.");
}

TEST_F(PathInfoTest, ByteOrderMarkOfUtf8DoesNotHideTheFirstKey) {
    EXPECT_EQ(valueOf("\xEF\xBB\xBFQadDataDir=D:\\data\n", "QadDataDir"), "D:\\data");
}

}  // namespace
