// Paths in code page 932, where the second byte of a character may be 0x5C, a backslash.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/native/lead_bytes.h"
#include "vek/exception.h"
#include "vek/fs/path_text.h"

namespace {

namespace fs = vek::fs;

// U+8868, "table".
const std::string table = "\x95\\";

class DoubleBytePathTest : public testing::Test {
  protected:
    DoubleBytePathTest() {
        for (unsigned byte = 0x81; byte <= 0xFC; ++byte) {
            vek::test::leadBytes[byte] = byte <= 0x9F || byte >= 0xE0;
        }
    }
    ~DoubleBytePathTest() override { vek::test::leadBytes.reset(); }
};

std::string changed(std::string& (*change)(std::string&), std::string path) {
    return change(path);
}

TEST_F(DoubleBytePathTest, CutsAtCharacters) {
    EXPECT_EQ(changed(&fs::dirName, "new\\" + table), "new");
    EXPECT_EQ(changed(&fs::dirName, table), ".");
    EXPECT_EQ(changed(&fs::dirName, table + "\\x"), table);
    EXPECT_EQ(changed(&fs::baseName, "C:\\" + table), table);
    EXPECT_EQ(changed(&fs::baseName, table + ".txt"), table + ".txt");
    EXPECT_EQ(fs::dirLength("C:\\" + table), 3u);
    EXPECT_EQ(fs::dirLength(table), 0u);
}

TEST_F(DoubleBytePathTest, KeepsALastCharacterThatEndsLikeASeparator) {
    EXPECT_EQ(changed(&fs::removeTrailingSeparators, "new\\" + table), "new\\" + table);
    EXPECT_EQ(changed(&fs::removeTrailingSeparators, "new\\" + table + "\\/\\"), "new\\" + table);
    EXPECT_EQ(changed(&fs::removeLastSeparator, "new\\" + table), "new\\" + table);
    EXPECT_EQ(changed(&fs::removeLastSeparator, "new\\" + table + "\\"), "new\\" + table);
}

TEST_F(DoubleBytePathTest, ComponentsAreWhole) {
    std::string path = "a\\" + table + "\\b";
    EXPECT_EQ(fs::stripComponents(path, 1), "a\\" + table);
    EXPECT_EQ(fs::stripComponents(path, 1), "a");
    EXPECT_EQ(fs::components("C:\\" + table + "\\\\b\\"),
              (std::vector<std::string>{"C:", table, "b"}));
    EXPECT_EQ(fs::commonPrefix("a\\" + table + "x", "a\\" + table + "y"), "a");
    EXPECT_EQ(fs::commonPrefix(table + "\\a", table + "\\b"), table);
    EXPECT_EQ(fs::extension("a.b\\" + table + ".c", true), "c");
    EXPECT_EQ(fs::extensionParts("a.b\\" + table + ".c"), (std::vector<std::string>{table, "c"}));
}

TEST_F(DoubleBytePathTest, ExpandsAgainstWholeComponents) {
    EXPECT_EQ(fs::expandFrom(table, "C:\\cwd"), "C:\\cwd\\" + table);
    EXPECT_EQ(fs::expandFrom("x", "C:\\" + table), "C:\\" + table + "\\x");
    EXPECT_EQ(fs::expandFrom("..\\x", "C:\\a\\" + table), "C:\\a\\x");
    EXPECT_EQ(fs::expandFrom(table + "\\\\x", "C:\\cwd"), "C:\\cwd\\" + table + "\\x");
}

}  // namespace
