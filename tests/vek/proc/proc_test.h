// Shared by the tests of child processes.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/program_path.h"
#include "vek/pal.h"
#include "vek/proc/child.h"
#include "vek/proc/program.h"

namespace vek::test {

// Upper bound of each wait, in milliseconds.
inline constexpr DWORD limitMs = 30000;

// See child.cpp.
inline std::string childProgram() {
    return programDirectory() + "\\proc_child.exe";
}

// An event with a unique name that children wait for.
class NamedEvent : public NoCopy {
  public:
    NamedEvent() : handle(CreateEventA(nullptr, TRUE, FALSE, name.c_str())) {}
    ~NamedEvent() {
        set();
        CloseHandle(handle);
    }
    void set() const { SetEvent(handle); }

    // Returns false if it isn't set in time.
    bool await() const { return WaitForSingleObject(handle, limitMs) == WAIT_OBJECT_0; }

    const std::string name =
        "vek-proc-test-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count);

  private:
    // Not the address: a child of an earlier event may still have that one open, and signalled.
    static inline std::atomic<unsigned> count = 0;

    const HANDLE handle;
};

// Starts the framework for each test. A test must leave no child running: the destructor of `pal`
// would wait for it.
class ProcTest : public testing::Test {
  protected:
    // Returns the text of the Error that `action` throws, or "nothing".
    template <class Error, class Action>
    static std::string thrown(Action action) {
        try {
            action();
        } catch (const Error& error) {
            return error.what();
        }
        return "nothing";
    }

    static void prepare(proc::Child& child, const std::vector<std::string>& arguments) {
        child.setArguments({childProgram()}, true);
        child.setArguments(arguments, false);
    }

    // Calls `wait` without a time-out.
    static proc::ExitStatus waited(proc::Child& child) {
        proc::ExitStatus status;
        child.wait(status);
        return status;
    }

    static proc::ExitStatus waitedUpTo(proc::Child& child, std::int64_t timeoutMs) {
        proc::ExitStatus status;
        child.wait(status, true, &timeoutMs);
        return status;
    }

    // Waits for the child's process itself, without collecting the child.
    static bool hasEnded(const proc::Child& child, DWORD timeoutMs = limitMs) {
        return WaitForSingleObject(child.getProcess().hProcess, timeoutMs) == WAIT_OBJECT_0;
    }

    // Runs `program` and returns its standard output.
    static std::string outputOf(proc::Program& program) {
        std::string output;
        EXPECT_TRUE(program.exchange(nullptr, &output, nullptr));
        return output;
    }

    const VekPal pal{false, 0, 0, nullptr};
};

}  // namespace vek::test
