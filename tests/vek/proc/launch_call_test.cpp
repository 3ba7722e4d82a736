// The call that starts a process, as the system sees it.
#include <cstring>

#include "tests/support/replaced_import.h"
#include "tests/vek/proc/proc_test.h"

namespace {

using vek::OsError;
using vek::proc::Child;

// The arguments of the last call of CreateProcessA.
struct Call {
    bool hasProgram = true;
    std::string commandLine;
    bool hasSecurity = true;
    BOOL inherits = FALSE;
    DWORD flags = 0;
    std::string environment;
    std::string directory;
    STARTUPINFOA startup = {};
} call;

BOOL WINAPI recordCall(LPCSTR program, LPSTR commandLine, LPSECURITY_ATTRIBUTES ofProcess,
                       LPSECURITY_ATTRIBUTES ofThread, BOOL inherits, DWORD flags,
                       LPVOID environment, LPCSTR directory, LPSTARTUPINFOA startup,
                       LPPROCESS_INFORMATION started) {
    // The bytes up to the end of the block, without its last zero byte.
    std::string block;
    if (const char* text = static_cast<const char*>(environment)) {
        for (; *text != '\0'; text += std::strlen(text) + 1) {
            block += std::string(text) + ";";
        }
    }
    call = {program != nullptr,
            commandLine,
            ofProcess != nullptr || ofThread != nullptr,
            inherits,
            flags,
            environment != nullptr ? block : "inherited",
            directory != nullptr ? directory : "inherited",
            *startup};
    // What a failing call leaves behind must not be taken for a process.
    *started = {reinterpret_cast<HANDLE>(0x1234), reinterpret_cast<HANDLE>(0x1238), 5, 6};
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return FALSE;
}

class LaunchCall : public vek::test::ProcTest {
  protected:
    LaunchCall() { child.setArguments({"C:\\a program.exe", "an argument"}, true); }

    // Starts the child, which fails, and records the call.
    void start() {
        const support::ReplacedImport<decltype(&CreateProcessA)> replaced("CreateProcessA",
                                                                          recordCall);
        EXPECT_THROW(child.start(), OsError);
        EXPECT_EQ(child.getProcess().dwProcessId, 0u);
        EXPECT_EQ(child.getProcess().hProcess, INVALID_HANDLE_VALUE);
        EXPECT_EQ(child.getProcess().hThread, INVALID_HANDLE_VALUE);
    }

    Child child;
};

TEST_F(LaunchCall, HasTheCommandLineAloneAndInheritsHandles) {
    start();
    EXPECT_FALSE(call.hasProgram);
    EXPECT_EQ(call.commandLine, "\"C:\\a program.exe\" \"an argument\"");
    EXPECT_FALSE(call.hasSecurity);
    EXPECT_EQ(call.inherits, TRUE);
    EXPECT_EQ(call.startup.cb, 68u);
    EXPECT_EQ(call.startup.dwFlags, static_cast<DWORD>(STARTF_USESTDHANDLES));
}

TEST_F(LaunchCall, IsSuspendedInAGroupOfItsOwnAndOutsideTheJobOnlyIfAskedFor) {
    start();
    EXPECT_EQ(call.flags, 0x204u);
    child.setBreakaway(true);
    start();
    EXPECT_EQ(call.flags, 0x1000204u);
    child.setBreakaway(false);
    start();
    EXPECT_EQ(call.flags, 0x204u);
}

TEST_F(LaunchCall, PassesEnvironmentAndDirectoryOnlyIfTheyAreSet) {
    start();
    EXPECT_EQ(call.environment, "inherited");
    EXPECT_EQ(call.directory, "inherited");
    child.setEnvironment({"A=1", "B=2"});
    child.setWorkingDirectory("C:\\somewhere");
    start();
    EXPECT_EQ(call.environment, "A=1;B=2;");
    EXPECT_EQ(call.directory, "C:\\somewhere");
}

}  // namespace
