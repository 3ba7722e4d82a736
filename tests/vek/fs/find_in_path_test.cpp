#include "vek/fs/find_in_path.h"

#include <gtest/gtest.h>

#include "tests/vek/temporary_directory.h"
#include "vek/base/environment.h"
#include "vek/base/text.h"

namespace {

using vek::fs::findInPath;

// Ends with the search path it began with.
class FindInPathTest : public vek::test::TemporaryDirectoryTest {
  protected:
    FindInPathTest() {
        vek::getEnv("PATH", before);
        CreateDirectoryA(path("one").c_str(), nullptr);
        CreateDirectoryA(path("two").c_str(), nullptr);
        CreateDirectoryA(path("two\\first.exe").c_str(), nullptr);
        for (const char* name : {"one\\first.exe", "one\\both.exe", "two\\both.exe",
                                 "two\\second.exe", "two\\plain"}) {
            writeFile(name, "");
        }
        vek::setEnv("PATH", path("one") + ";" + path("two"));
    }
    ~FindInPathTest() override { vek::setEnv("PATH", before); }

    std::string before;
};

TEST(FindInPathConstants, AreToldByTheirNames) {
    EXPECT_EQ(vek::fs::pathVariableName(), "PATH");
    EXPECT_EQ(vek::fs::executableSuffix(), ".exe");
}

TEST_F(FindInPathTest, FindsProgramsOfTheSystemWithoutTheirSuffixOnly) {
    vek::setEnv("PATH", before);
    std::string found = findInPath("cmd");
    vek::toLower(found);
    EXPECT_TRUE(found.ends_with("\\cmd.exe")) << found;
    EXPECT_EQ(findInPath("cmd.exe"), "");
}

TEST_F(FindInPathTest, TakesTheFirstDirectoryThatHasTheFile) {
    EXPECT_EQ(findInPath("both"), path("one\\both.exe"));
    EXPECT_EQ(findInPath("second"), path("two\\second.exe"));
    EXPECT_EQ(findInPath("second\\"), path("two\\second.exe"));
    vek::setEnv("PATH", path("two") + ";" + path("one"));
    EXPECT_EQ(findInPath("both"), path("two\\both.exe"));
    // A directory of that name isn't a program.
    EXPECT_EQ(findInPath("first"), path("one\\first.exe"));
}

TEST_F(FindInPathTest, TellsTheDirectoryIfAsked) {
    EXPECT_EQ(findInPath("second", true), path("two"));
    EXPECT_EQ(findInPath("none", true), "");
    EXPECT_EQ(findInPath(path("two\\second.exe"), true), path("two"));
}

TEST_F(FindInPathTest, SuffixIsAppendedToEveryName) {
    EXPECT_EQ(findInPath("both.exe"), "");
    EXPECT_EQ(findInPath("plain"), "");
    EXPECT_EQ(findInPath(""), "");
}

TEST_F(FindInPathTest, AbsoluteNameIsTakenAsItStands) {
    EXPECT_EQ(findInPath(path("two\\plain")), path("two\\plain"));
    EXPECT_EQ(findInPath(path("two\\plain\\")), path("two\\plain"));
    EXPECT_EQ(findInPath(path("two\\second")), "");
    EXPECT_EQ(findInPath(path("two")), "");
    EXPECT_EQ(findInPath(path("two\\none"), true), "");
}

TEST_F(FindInPathTest, EmptyElementsAreLeftOut) {
    vek::setEnv("PATH", ";;" + path("none") + ";;" + path("two") + ";");
    EXPECT_EQ(findInPath("both"), path("two\\both.exe"));
}

TEST_F(FindInPathTest, AbsentVariableNamesNoDirectory) {
    vek::unsetEnv("PATH");
    EXPECT_EQ(findInPath("both"), "");
    EXPECT_EQ(findInPath(path("one\\both.exe")), path("one\\both.exe"));
}

TEST_F(FindInPathTest, EmptyVariableNamesNoDirectory) {
    vek::setEnv("PATH", "");
    ASSERT_TRUE(vek::hasEnv("PATH"));
    EXPECT_EQ(findInPath("both"), "");
}

TEST_F(FindInPathTest, HostileNamesAreFoundNowhere) {
    for (const std::string& name :
         {std::string("both\0", 5), std::string(32000, 'a'), std::string("*"),
          std::string("C:both"), std::string("\\\\server\\share\\both.exe"), std::string("|")}) {
        EXPECT_EQ(findInPath(name), "");
    }
}

}  // namespace
