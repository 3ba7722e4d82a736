#include "vek/fs/program_path.h"

#include <gtest/gtest.h>

#include "vek/base/windows.h"

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

}  // namespace
