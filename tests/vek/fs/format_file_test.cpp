#include "vek/fs/format_file.h"

#include <gtest/gtest.h>

#include "tests/support/thrown.h"
#include "tests/vek/fs/other_volume.h"
#include "vek/exception.h"
#include "vek/fs/current_directory.h"

namespace {

using vek::formatFile;
using vek::test::codeThrownBy;
using vek::test::textThrownBy;

using Values = std::map<std::string, std::string>;

class FormatFileTest : public vek::test::TwoVolumesTest {
  protected:
    // What becomes of `text`, byte for byte.
    std::string formatted(const std::string& text, const Values& values,
                          std::size_t expectedCount) const {
        writeFile("source", text);
        EXPECT_EQ(formatFile(path("source"), path("target"), values), expectedCount);
        return readFile("target");
    }
};

TEST_F(FormatFileTest, ReplacesPlaceholdersAndCountsThem) {
    EXPECT_EQ(formatted("a={x}\r\n{y} and {x}\r\n{other}\r\n", {{"x", "1"}, {"y", ""}}, 3),
              "a=1\r\n and 1\r\n{other}\r\n");
}

TEST_F(FormatFileTest, PlaceholderDoesntReachOverALineEnd) {
    EXPECT_EQ(formatted("{x\n}\n", {{"x\n", "1"}}, 0), "{x\r\n}\r\n");
}

TEST_F(FormatFileTest, EveryLineEndsInCrLf) {
    EXPECT_EQ(formatted("a\nb\r\nc", {}, 0), "a\r\nb\r\nc\r\n");
    EXPECT_EQ(formatted("\n\n", {}, 0), "\r\n\r\n");
    EXPECT_EQ(formatted("{x}", {{"x", "1\n2"}}, 1), "1\r\n2\r\n");
}

TEST_F(FormatFileTest, EmptySourceMakesAnEmptyTarget) {
    EXPECT_EQ(formatted("", {{"x", "1"}}, 0), "");
}

TEST_F(FormatFileTest, TargetIsReplaced) {
    writeFile("target", "much longer old contents");
    EXPECT_EQ(formatted("a", {}, 0), "a\r\n");
}

TEST_F(FormatFileTest, LongLinesAndZeroBytesPass) {
    const std::string text = std::string(1000000, 'a') + "{x}" + std::string(1, '\0') + "b";
    EXPECT_EQ(formatted(text, {{"x", "1"}}, 1),
              std::string(1000000, 'a') + "1" + std::string(1, '\0') + "b\r\n");
}

TEST_F(FormatFileTest, SameFileIsRefusedHoweverItIsSpelled) {
    const std::string expected =
        "Usage error: formatFile: Both source and dest point to the same file.";
    writeFile("source", "text");
    const std::string before = vek::fs::currentDirectory();
    vek::fs::changeDirectory(path());
    for (const std::string& target :
         {path("source"), std::string("source"), std::string(".\\source"), path("SOURCE"),
          path("x\\..\\source"), path("\\source")}) {
        EXPECT_EQ(textThrownBy<vek::UsageError>([&] { formatFile(path("source"), target, {}); }),
                  expected)
            << target;
        EXPECT_EQ(textThrownBy<vek::UsageError>([&] { formatFile(target, path("source"), {}); }),
                  expected)
            << target;
    }
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { formatFile("none", ".\\none", {}); }), expected);
    vek::fs::changeDirectory(before);
    EXPECT_EQ(readFile("source"), "text");
}

TEST_F(FormatFileTest, SourceThatCantBeOpenedLeavesTheTarget) {
    writeFile("target", "old");
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { formatFile(path("none"), path("target"), {}); }),
              2u);
    try {
        formatFile(path(), path("target"), {});
        ADD_FAILURE();
    } catch (const vek::FsError& error) {
        EXPECT_EQ(error.path(), "Unable to open '" + path() + "' for reading.");
        EXPECT_EQ(error.osError().code(), 5u);
        EXPECT_EQ(error.what(), "File system error at location: \"Unable to open '" + path() +
                                    "' for reading.\": " + vek::OsError(5).description());
    }
    EXPECT_EQ(readFile("target"), "old");
}

TEST_F(FormatFileTest, TargetThatCantBeOpenedIsTold) {
    writeFile("source", "text");
    try {
        formatFile(path("source"), path("none\\x"), {});
        ADD_FAILURE();
    } catch (const vek::FsError& error) {
        EXPECT_EQ(typeid(error), typeid(vek::FsError));
        EXPECT_EQ(error.path(), "Unable to open '" + path("none\\x") + "' for writing.");
        EXPECT_EQ(error.osError().code(), 3u);
    }
}

TEST_F(FormatFileTest, CtrlZEndsTheSource) {
    EXPECT_EQ(formatted("a\r\nb\x1A{x}\r\nc\r\n", {{"x", "1"}}, 0), "a\r\nb\r\n");
}

TEST_F(FormatFileTest, TargetThatCantBeWrittenIsAnOsError) {
    writeFile("source", "text");
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { formatFile(path("source"), fullFile, {}); }),
              static_cast<std::uint32_t>(ERROR_DISK_FULL));
}

TEST_F(FormatFileTest, SourceThatCantBeReadIsAnOsError) {
    EXPECT_THROW(formatFile(unreadableFile, path("target"), {}), vek::OsError);
}

}  // namespace
