// The error mode of the helper's process, which it has no user for, and of the GUI that it starts.
#include "source/tolmar/win32_system.h"

#include <gtest/gtest.h>

#include "tests/support/replaced_import.h"

namespace {

UINT errorModeAtStart = 0;

UINT WINAPI recordErrorMode(const char*, UINT) {
    errorModeAtStart = GetErrorMode();
    return 33;
}

// The error mode of this process, set back at the end.
class ErrorMode : public testing::TestWithParam<UINT> {
  protected:
    ErrorMode() : before(SetErrorMode(GetParam())) {}
    ~ErrorMode() override { SetErrorMode(before); }

  private:
    const UINT before;
};

// A started program inherits it.
TEST_P(ErrorMode, OfAStartedProgramIsThatOfTheHelpersCaller) {
    tolmar::Win32System system;
    constexpr UINT unattended =
        SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX;
    EXPECT_EQ(GetErrorMode(), unattended);
    const support::ReplacedImport<decltype(&WinExec)> replaced("WinExec", recordErrorMode);
    EXPECT_EQ(system.winExec("gui", SW_SHOW), 33u);
    EXPECT_EQ(errorModeAtStart, GetParam());
    EXPECT_EQ(GetErrorMode(), unattended);
}

INSTANTIATE_TEST_SUITE_P(Of, ErrorMode, testing::Values(0u, UINT{SEM_NOGPFAULTERRORBOX}));

}  // namespace
