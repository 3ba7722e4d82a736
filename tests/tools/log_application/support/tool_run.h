// log_application_test::ToolRun: one run of log_application.exe and its output.
#pragma once

#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace log_application_test {

// A running program whose outputs are redirected to files.
class ToolRun : public vek::NoCopy {
  public:
    // The time limit of a run, in milliseconds.
    static constexpr DWORD limitMs = 60'000;
    // The same for one that handles tens of thousands of messages, on a machine under full load.
    static constexpr DWORD burstLimitMs = 250'000;

    // Starts `program`, by default log_application.exe, with the command tail `tail`. Its standard
    // output is `output`, which isn't owned, or a file if that is null. Only the outputs are
    // inherited, so it holds no port of the test open. `flags` are further creation flags. Calls
    // CreateProcess. Throws vek::FsError.
    explicit ToolRun(const std::string& tail, const std::string& program = "",
                     HANDLE output = nullptr, DWORD flags = 0);

    // Terminates the program if it still runs, and removes its files.
    ~ToolRun();

    // Blocks until the program has ended. Returns its exit code, or STILL_ACTIVE after `limit`
    // milliseconds.
    DWORD wait(DWORD limit = limitMs);

    // The output so far.
    std::string output() const;
    std::string errors() const;

    // Blocks until its output, or its errors, contain `text`. Returns false if they don't in time.
    bool waitForOutput(const std::string& text) const;
    bool waitForErrors(const std::string& text) const;

    DWORD processId() const { return id; }

    // Calls TerminateProcess.
    void terminate();

    // Stops its main thread for good. Calls SuspendThread.
    void suspendMainThread();

  private:
    const std::string outputPath;
    const std::string errorPath;
    HANDLE process = nullptr;
    HANDLE mainThread = nullptr;
    DWORD id = 0;
};

// Exit code, output and errors of a whole run.
struct ToolResult {
    DWORD code;
    std::string output;
    std::string errors;
};

ToolResult runTool(const std::string& tail);

// Returns `text` with each `from` replaced by `to`.
std::string replaced(std::string text, const std::string& from, const std::string& to);

// Returns the contents of the golden file `name`, with line feeds as line ends.
std::string golden(const std::string& name);

}  // namespace log_application_test
