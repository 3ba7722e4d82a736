#include "vek/fs/path_text.h"

#include <gtest/gtest.h>

#include "vek/exception.h"

namespace {

using vek::fs::commonPrefix;
using vek::fs::dirLength;
using vek::fs::expandFrom;
using vek::fs::extension;
using vek::fs::extensionParts;
using vek::fs::findFirstOf;
using vek::fs::isAbsolute;
using vek::fs::join;

using Parts = std::vector<std::string>;

std::string withoutTrailing(std::string path) {
    return vek::fs::removeTrailingSeparators(path);
}
std::string dirNameOf(std::string path) {
    return vek::fs::dirName(path);
}
std::string baseNameOf(std::string path) {
    return vek::fs::baseName(path);
}
std::string stripped(std::string path, std::size_t count) {
    return vek::fs::stripComponents(path, count);
}

TEST(IsAbsolute, NeedsALeadingBackslashOrADriveWithOne) {
    EXPECT_TRUE(isAbsolute("\\x"));
    EXPECT_TRUE(isAbsolute("\\"));
    EXPECT_TRUE(isAbsolute("\\\\server\\share"));
    EXPECT_TRUE(isAbsolute("C:\\"));
    EXPECT_TRUE(isAbsolute("C:\\x"));
    EXPECT_FALSE(isAbsolute("C:"));
    EXPECT_FALSE(isAbsolute("C:x"));
    EXPECT_FALSE(isAbsolute("C:/"));
    EXPECT_FALSE(isAbsolute("/x"));
    EXPECT_FALSE(isAbsolute("x\\y"));
    EXPECT_FALSE(isAbsolute(""));
}

TEST(RootOf, IsTheDriveWithItsBackslashIfAny) {
    EXPECT_EQ(vek::fs::rootOf("C:\\x"), "C:\\");
    EXPECT_EQ(vek::fs::rootOf("C:\\"), "C:\\");
    EXPECT_EQ(vek::fs::rootOf("C:x"), "C:");
    EXPECT_EQ(vek::fs::rootOf("C:"), "C:");
    EXPECT_EQ(vek::fs::rootOf("C:/x"), "C:");
    EXPECT_EQ(vek::fs::rootOf("\\x"), "");
    EXPECT_EQ(vek::fs::rootOf("\\\\server\\share"), "");
    EXPECT_EQ(vek::fs::rootOf("x"), "");
    EXPECT_EQ(vek::fs::rootOf(""), "");
}

TEST(RemoveTrailingSeparators, RemovesBothKindsButNotTheRoot) {
    EXPECT_EQ(withoutTrailing("C:\\x\\"), "C:\\x");
    EXPECT_EQ(withoutTrailing("C:\\x\\/\\"), "C:\\x");
    EXPECT_EQ(withoutTrailing("C:\\"), "C:\\");
    EXPECT_EQ(withoutTrailing("C:\\\\"), "C:\\");
    EXPECT_EQ(withoutTrailing("C:/"), "C:");
    EXPECT_EQ(withoutTrailing("x"), "x");
    EXPECT_EQ(withoutTrailing("\\"), "");
    EXPECT_EQ(withoutTrailing(""), "");
}

TEST(DirName, CutsAtTheLastBackslash) {
    EXPECT_EQ(dirNameOf("C:\\a\\b"), "C:\\a");
    EXPECT_EQ(dirNameOf("C:\\x"), "C:");
    EXPECT_EQ(dirNameOf("C:\\x\\"), "C:\\x");
    EXPECT_EQ(dirNameOf("abc"), ".");
    EXPECT_EQ(dirNameOf(""), ".");
    EXPECT_EQ(dirNameOf("\\x"), "");
    EXPECT_EQ(dirNameOf("a/b"), ".");
}

TEST(BaseName, IsWhatStandsBehindTheLastBackslash) {
    EXPECT_EQ(baseNameOf("C:\\a\\b.c"), "b.c");
    EXPECT_EQ(baseNameOf("abc"), "abc");
    EXPECT_EQ(baseNameOf("a/b"), "a/b");
    EXPECT_EQ(baseNameOf("C:x"), "C:x");
    EXPECT_EQ(baseNameOf("a\\"), "");
    EXPECT_EQ(baseNameOf(""), "");
}

TEST(DirLength, IsTheOffsetBehindTheLastBackslash) {
    EXPECT_EQ(dirLength("C:\\a\\b"), 5u);
    EXPECT_EQ(dirLength("\\x"), 1u);
    EXPECT_EQ(dirLength("a\\"), 2u);
    EXPECT_EQ(dirLength("abc"), 0u);
    EXPECT_EQ(dirLength("a/b"), 0u);
    EXPECT_EQ(dirLength(""), 0u);
}

TEST(Extension, StandsBehindTheFirstOrTheLastDotOfTheName) {
    EXPECT_EQ(extension("C:\\a.b\\x.tar.gz", true), "tar.gz");
    EXPECT_EQ(extension("C:\\a.b\\x.tar.gz", false), "gz");
    EXPECT_EQ(extension("C:\\a.b\\x", true), "");
    EXPECT_EQ(extension("C:\\a.b\\x", false), "");
    EXPECT_EQ(extension("x.", true), "");
    EXPECT_EQ(extension(".x", false), "x");
    EXPECT_EQ(extension("..", true), ".");
    EXPECT_EQ(extension("..", false), "");
    EXPECT_EQ(extension("", false), "");
}

TEST(ExtensionParts, AreTheNameSplitAtItsDots) {
    EXPECT_EQ(extensionParts("C:\\a.b\\x.tar.gz"), (Parts{"x", "tar", "gz"}));
    EXPECT_EQ(extensionParts("x"), Parts{"x"});
    EXPECT_EQ(extensionParts(".a..b."), (Parts{"a", "b"}));
    EXPECT_EQ(extensionParts(" a . b "), (Parts{" a ", " b "}));
    EXPECT_EQ(extensionParts("a\\"), Parts{});
    EXPECT_EQ(extensionParts(""), Parts{});
}

TEST(CommonPrefix, JoinsTheLeadingComponentsThatAreTheSame) {
    EXPECT_EQ(commonPrefix("C:\\a\\b\\c", "C:\\a\\b\\d"), "C:\\a\\b");
    EXPECT_EQ(commonPrefix("C:\\a\\b", "C:\\a\\b\\c"), "C:\\a\\b");
    EXPECT_EQ(commonPrefix("a\\b", "a\\b"), "a\\b");
    EXPECT_EQ(commonPrefix("a\\bc", "a\\bd"), "a");
    EXPECT_EQ(commonPrefix("C:\\a", "D:\\a"), "");
    EXPECT_EQ(commonPrefix("a", "b"), "");
    EXPECT_EQ(commonPrefix("", ""), "");
}

TEST(CommonPrefix, ComparesBytes) {
    EXPECT_EQ(commonPrefix("a\\B\\c", "a\\b\\c"), "a");
    EXPECT_EQ(commonPrefix("C:\\x", "c:\\x"), "");
    EXPECT_EQ(commonPrefix("a\\\xE4", "a\\\xE4\\b"), "a\\\xE4");
}

TEST(CommonPrefix, IsEmptyIfOnlyOnePathIsAbsolute) {
    EXPECT_EQ(commonPrefix("C:\\a\\b", "C:a\\b"), "");
    EXPECT_EQ(commonPrefix("\\a\\b", "a\\b"), "");
    EXPECT_EQ(commonPrefix("a", "\\a"), "");
    EXPECT_EQ(commonPrefix("C:\\a", "C:"), "");
    EXPECT_EQ(commonPrefix("C:", "C:\\a"), "");
}

TEST(CommonPrefix, KeepsLeadingBackslashes) {
    EXPECT_EQ(commonPrefix("\\a\\b", "\\a\\c"), "\\a");
    EXPECT_EQ(commonPrefix("\\\\server\\share\\a", "\\\\server\\share\\b"), "\\\\server\\share");
}

TEST(Join, PutsOneBackslashBetweenTheParts) {
    EXPECT_EQ(join({"a", "b", "c"}), "a\\b\\c");
    EXPECT_EQ(join({"a"}), "a");
    EXPECT_EQ(join({"", "a", ""}), "\\a\\");
    EXPECT_EQ(join({}), "");
}

TEST(StripComponents, RemovesFromTheEndAndStopsAtTheFirst) {
    EXPECT_EQ(stripped("C:\\a\\b\\c", 0), "C:\\a\\b\\c");
    EXPECT_EQ(stripped("C:\\a\\b\\c", 1), "C:\\a\\b");
    EXPECT_EQ(stripped("C:\\a\\b\\c", 2), "C:\\a");
    EXPECT_EQ(stripped("C:\\a\\b\\c", 3), "C:");
    EXPECT_EQ(stripped("C:\\a\\b\\c", 4), "C:");
    EXPECT_EQ(stripped("a\\b", 4000000000u), "a");
    EXPECT_EQ(stripped("\\a", 2), "");
    EXPECT_EQ(stripped("a/b", 1), "a/b");
    EXPECT_EQ(stripped("", 1), "");
}

TEST(ReplaceChar, ReplacesInPlace) {
    std::string text = "a/b/c";
    EXPECT_EQ(&vek::fs::replaceChar(text, '/', '\\'), &text);
    EXPECT_EQ(text, "a\\b\\c");
}

TEST(ExpandFrom, AbsolutePathsStayAsTheyAre) {
    EXPECT_EQ(expandFrom("C:\\a\\\\.\\..\\b\\", "C:\\cwd"), "C:\\a\\\\.\\..\\b\\");
    EXPECT_EQ(expandFrom("\\a", "C:\\cwd"), "\\a");
    EXPECT_EQ(expandFrom("\\\\server\\share", ""), "\\\\server\\share");
    EXPECT_EQ(expandFrom("D:\\x", ""), "D:\\x");
    // So does what the system takes for absolute.
    EXPECT_EQ(expandFrom("D:/x\\y", "C:\\cwd"), "D:/x\\y");
}

TEST(ExpandFrom, LeadingDotBecomesTheDirectory) {
    EXPECT_EQ(expandFrom(".", "C:\\cwd"), "C:\\cwd");
    EXPECT_EQ(expandFrom(".\\", "C:\\cwd"), "C:\\cwd");
    EXPECT_EQ(expandFrom(".\\a", "C:\\cwd"), "C:\\cwd\\a");
    EXPECT_EQ(expandFrom(".", "C:\\"), "C:\\");
    EXPECT_EQ(expandFrom(".\\a", "C:\\"), "C:\\a");
}

TEST(ExpandFrom, LeadingDotsBecomeTheParentOfTheDirectory) {
    EXPECT_EQ(expandFrom("..\\a", "C:\\cwd\\b"), "C:\\cwd\\a");
    EXPECT_EQ(expandFrom("..", "C:\\cwd\\b"), "C:\\cwd");
    EXPECT_EQ(expandFrom("..", "C:\\cwd"), "C:");
    EXPECT_EQ(expandFrom("..\\a", "C:\\cwd"), "C:\\a");
    EXPECT_EQ(expandFrom("..\\a", "C:\\"), "C:\\a");
    EXPECT_EQ(expandFrom("..", "cwd"), ".");
    EXPECT_EQ(expandFrom("..\\a", "\\"), ".\\a");
}

TEST(ExpandFrom, LaterDotsStay) {
    EXPECT_EQ(expandFrom("a\\..\\b", "C:\\cwd"), "C:\\cwd\\a\\..\\b");
    EXPECT_EQ(expandFrom("..\\..", "C:\\a\\b"), "C:\\a\\..");
    EXPECT_EQ(expandFrom(".\\.", "C:\\a"), "C:\\a\\.");
}

TEST(ExpandFrom, AnythingElseGoesBelowTheDirectory) {
    EXPECT_EQ(expandFrom("a\\b", "C:\\cwd"), "C:\\cwd\\a\\b");
    EXPECT_EQ(expandFrom("a\\\\b\\", "C:\\cwd"), "C:\\cwd\\a\\b");
    EXPECT_EQ(expandFrom("...", "C:\\cwd"), "C:\\cwd\\...");
    EXPECT_EQ(expandFrom("a/b", "C:\\cwd"), "C:\\cwd\\a/b");
    EXPECT_EQ(expandFrom("a", "C:\\"), "C:\\a");
    EXPECT_EQ(expandFrom("a", "\\\\server\\share"), "\\\\server\\share\\a");
}

TEST(ExpandFrom, EmptyPathIsTheDirectory) {
    EXPECT_EQ(expandFrom("", "C:\\cwd"), "C:\\cwd");
    EXPECT_EQ(expandFrom("", "C:\\"), "C:\\");
}

TEST(ExpandFrom, DriveAloneIsLeftOutOnThatDrive) {
    EXPECT_EQ(expandFrom("C:x", "C:\\cwd"), "C:\\cwd\\x");
    EXPECT_EQ(expandFrom("c:x\\y", "C:\\cwd"), "C:\\cwd\\x\\y");
    EXPECT_EQ(expandFrom("C:", "C:\\cwd"), "C:\\cwd");
    EXPECT_EQ(expandFrom("C:.\\x", "C:\\cwd"), "C:\\cwd\\x");
    EXPECT_EQ(expandFrom("C:..\\x", "C:\\a\\b"), "C:\\a\\x");
}

TEST(ExpandFrom, FailsWithoutADirectoryToGoBy) {
    for (const auto& [path, directory] :
         std::vector<std::pair<std::string, std::string>>{{".", ""},
                                                          {"..", ""},
                                                          {"a", ""},
                                                          {"", ""},
                                                          {"D:x", "C:\\cwd"},
                                                          {"D:", "C:\\cwd"},
                                                          {"C:x", "\\\\server\\share"}}) {
        try {
            expandFrom(path, directory);
            ADD_FAILURE() << path;
        } catch (const vek::RuntimeError& error) {
            EXPECT_STREQ(error.what(), "can't expand path, because CWD doesn't exist");
        }
    }
}

TEST(WithoutLongPathPrefix, IsTheOrdinaryPath) {
    using vek::fs::withoutLongPathPrefix;
    EXPECT_EQ(withoutLongPathPrefix("\\\\?\\C:\\dir\\x.exe"), "C:\\dir\\x.exe");
    EXPECT_EQ(withoutLongPathPrefix("\\\\?\\C:\\"), "C:\\");
    EXPECT_EQ(withoutLongPathPrefix("\\\\?\\UNC\\server\\share\\x"), "\\\\server\\share\\x");
    EXPECT_EQ(withoutLongPathPrefix("\\\\?\\unc\\server\\share"), "\\\\server\\share");
}

TEST(WithoutLongPathPrefix, OtherPathsStayAsTheyAre) {
    for (const std::string path :
         {"", "C:\\x", "\\\\server\\share", "\\\\.\\C:\\x", "\\\\?\\", "\\\\?\\C:", "\\\\?\\UNC",
          "\\\\?\\UNCx\\y", "\\\\?\\Volume{12345678-0000-0000-0000-000000000000}\\x", "\\??\\C:\\x",
          "x\\\\?\\C:\\x", "abcdC:\\x\\\\?\\y"}) {
        EXPECT_EQ(vek::fs::withoutLongPathPrefix(path), path);
    }
}

TEST(FindFirstOf, GivesTheOffsetOfTheFirstMemberFromStartOn) {
    EXPECT_EQ(findFirstOf("a/b\\c", "\\/", 0), 1);
    EXPECT_EQ(findFirstOf("a/b\\c", "\\/", 1), 1);
    EXPECT_EQ(findFirstOf("a/b\\c", "\\/", 2), 3);
    EXPECT_EQ(findFirstOf("a/b\\c", "\\/", 4), -1);
    EXPECT_EQ(findFirstOf("a\xFF", "\xFF", 0), 1);
    EXPECT_EQ(findFirstOf(std::string("a\0b", 3), std::string("\0", 1), 0), 1);
}

TEST(FindFirstOf, IsMinusOneIfThereIsNone) {
    EXPECT_EQ(findFirstOf("abc", "x", 0), -1);
    EXPECT_EQ(findFirstOf("abc", "", 0), -1);
    EXPECT_EQ(findFirstOf("", "a", 0), -1);
    EXPECT_EQ(findFirstOf("abc", "a", 3), -1);
    EXPECT_EQ(findFirstOf("abc", "a", std::string::npos), -1);
}

}  // namespace
