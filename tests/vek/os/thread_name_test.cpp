#include "vek/os/thread_name.h"

#include <gtest/gtest.h>

#include "tests/vek/thread_names_debugger.h"
#include "vek/base/windows.h"

namespace {

using vek::test::nameThreadException;

int namingsSeen = 0;

LONG CALLBACK countNamings(EXCEPTION_POINTERS* raised) {
    if (raised->ExceptionRecord->ExceptionCode == nameThreadException) {
        ++namingsSeen;
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

LONG WINAPI goOn(EXCEPTION_POINTERS*) {
    return EXCEPTION_CONTINUE_EXECUTION;
}

// Also the process that the debugger's test starts: its own outcome is the exit code.
TEST(OsThreadName, NamesTheCallingThread) {
    EXPECT_EQ(vek::os::nameThread("a named thread"), 1);
}

TEST(OsThreadName, ReachesADebuggerAndTheThreadGoesOn) {
    const vek::test::Debugged seen = vek::test::debugTest("OsThreadName.NamesTheCallingThread");
    ASSERT_EQ(seen.namings.size(), 1u);
    EXPECT_EQ(seen.namings[0].type, 0x1000u);
    EXPECT_EQ(seen.namings[0].name, "a named thread");
    EXPECT_TRUE(seen.namings[0].fromTheNamedThread);
    EXPECT_EQ(seen.namings[0].flags, 0u);
    EXPECT_EQ(seen.exitCode, 0u);
}

// An exception that no handler takes ends the process, so none may get behind the guard. The
// runtime's own threads have a handler for such exceptions in place, which would hide a missing
// guard; the test's one is asked before that and after the guard.
TEST(OsThreadName, ReachesNoOtherHandlerWithoutADebugger) {
    void* handler = AddVectoredExceptionHandler(1, countNamings);
    ASSERT_NE(handler, nullptr);
    namingsSeen = 0;
    EXPECT_EQ(vek::os::nameThread("nobody listens"), 1);
    EXPECT_EQ(vek::os::nameThread(""), 1);
    RemoveVectoredExceptionHandler(handler);
    EXPECT_EQ(namingsSeen, 0);
}

TEST(OsThreadName, LeavesNoHandlerBehind) {
    void* handler = AddVectoredExceptionHandler(1, countNamings);
    ASSERT_NE(handler, nullptr);
    vek::os::nameThread("named");
    namingsSeen = 0;
    const LPTOP_LEVEL_EXCEPTION_FILTER former = SetUnhandledExceptionFilter(goOn);
    RaiseException(nameThreadException, 0, 0, nullptr);
    SetUnhandledExceptionFilter(former);
    RemoveVectoredExceptionHandler(handler);
    EXPECT_EQ(namingsSeen, 1);
}

TEST(OsThreadName, NullNameIsRefused) {
    EXPECT_EQ(vek::os::nameThread(nullptr), 0);
}

}  // namespace
