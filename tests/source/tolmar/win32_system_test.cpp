// The error mode of the helper's process, which it has no user for, and of the GUI that it starts;
// and the operations that are more than a call of the system with the same arguments.
#include "source/tolmar/win32_system.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/support/replaced_import.h"
#include "vek/pathinfo.h"

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

TEST(Win32System, KeepsTheRuntimeFromShowingMessageBoxes) {
    const int before = _set_error_mode(_OUT_TO_MSGBOX);
    const tolmar::Win32System system;
    EXPECT_EQ(_set_error_mode(before), _OUT_TO_STDERR);
}

// There is no pathinfo.ini beside this program, which the call that makes the table throws for.
TEST(Win32System, MakesTheTableOfDirectoriesAndDestroysIt) {
    tolmar::Win32System system;
    vek::PathInfo::destroy();
    EXPECT_THROW(system.pathInfoInstance(), vek::PathInfo::Error);
    EXPECT_NO_THROW(system.pathInfoInstance()) << "the table is kept";
    system.pathInfoDestroy();
    EXPECT_THROW(system.pathInfoInstance(), vek::PathInfo::Error) << "it is made anew";
    vek::PathInfo::destroy();
}

DWORD slept = 0;

void WINAPI recordSleep(DWORD milliseconds) {
    slept = milliseconds;
}

TEST(Win32System, SleepsAsLongAsAsked) {
    tolmar::Win32System system;
    const support::ReplacedImport<decltype(&Sleep)> replaced("Sleep", recordSleep);
    system.sleep(90001);
    EXPECT_EQ(slept, 90001u);
}

TEST(Win32SystemDeathTest, ExitEndsTheProcessWithTheCode) {
    tolmar::Win32System system;
    EXPECT_EXIT(system.exit(41), testing::ExitedWithCode(41), "");
}

// Whether the processor's instruction or TerminateProcess ends it, the code is the same.
TEST(Win32SystemDeathTest, RangeCheckFailureEndsTheProcessAsTheRuntimeDoes) {
    tolmar::Win32System system;
    EXPECT_EXIT(system.rangeCheckFailure(), testing::ExitedWithCode(static_cast<int>(0xC0000409)),
                "");
}

}  // namespace
