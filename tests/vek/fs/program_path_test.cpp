#include "vek/fs/program_path.h"

#include <gtest/gtest.h>

#include "tests/vek/fs/peer.h"
#include "tests/vek/temporary_directory.h"
#include "vek/base/windows.h"
#include "vek/fs/operations.h"

namespace {

std::string thisModule() {
    char module[260] = {};
    GetModuleFileNameA(nullptr, module, sizeof module);
    return module;
}

TEST(ProgramDirectory, IsWhereThisProgramStands) {
    const std::string module = thisModule();
    EXPECT_EQ(vek::programDirectory(), module.substr(0, module.rfind('\\')));
}

TEST(ProgramName, EndsAtTheFirstDot) {
    EXPECT_EQ(vek::programName(), "fs_test");
}

class CopiedProgramTest : public vek::test::TemporaryDirectoryTest {};

TEST_F(CopiedProgramTest, NameEndsAtTheFirstOfSeveralDots) {
    vek::fs::createDirectory(path("dir.with.dots"));
    const std::string copied = path("dir.with.dots\\one.two.three.exe");
    ASSERT_NE(CopyFileA(vek::test::Peer::peerProgram().c_str(), copied.c_str(), TRUE), 0);
    EXPECT_EQ(vek::test::Peer("program-name one", copied).exitCode(), 0);
    EXPECT_EQ(vek::test::Peer("program-name one.two", copied).exitCode(), 1);
}

// The system may keep the prefix in the module's path; no path is built on it.
TEST_F(CopiedProgramTest, StartedByALongPathHasAnOrdinaryOne) {
    const std::string copied = path("peer.exe");
    ASSERT_NE(CopyFileA(vek::test::Peer::peerProgram().c_str(), copied.c_str(), TRUE), 0);
    EXPECT_EQ(vek::test::Peer("program-path \"" + copied + "\"", "\\\\?\\" + copied).exitCode(), 0);
}

}  // namespace
