#include "vek/fs/path_text.h"

#include <gtest/gtest.h>

namespace {

std::string withoutTrailing(std::string path) {
    return vek::fs::removeTrailingSeparators(path);
}
std::string dirNameOf(std::string path) {
    return vek::fs::dirName(path);
}

TEST(RootOf, IsTheDriveWithItsBackslashIfAny) {
    EXPECT_EQ(vek::fs::rootOf("C:\\x"), "C:\\");
    EXPECT_EQ(vek::fs::rootOf("C:\\"), "C:\\");
    EXPECT_EQ(vek::fs::rootOf("C:x"), "C:");
    EXPECT_EQ(vek::fs::rootOf("C:"), "C:");
    EXPECT_EQ(vek::fs::rootOf("C:/x"), "C:");
    EXPECT_EQ(vek::fs::rootOf("\\x"), "");
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
    EXPECT_EQ(dirNameOf("abc"), ".");
    EXPECT_EQ(dirNameOf(""), ".");
    EXPECT_EQ(dirNameOf("\\x"), "");
    EXPECT_EQ(dirNameOf("a/b"), ".");
}

}  // namespace
