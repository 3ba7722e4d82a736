// log_application_test::ToolRun: one run of log_application.exe, with what it writes.
#pragma once

#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace log_application_test {

// A program that runs with its outputs in files of their own.
class ToolRun : public vek::NoCopy {
  public:
    // No run of a test takes longer, in milliseconds.
    static constexpr DWORD limitMs = 60'000;

    // Starts `program`, log_application.exe unless another is given, with `tail`, raw, behind its
    // name. Without a file for it, its standard output is `output`, which isn't owned. It inherits
    // its outputs and nothing else: no port of the test stays open in it. `flags` are further
    // creation flags. Throws vek::FsError.
    explicit ToolRun(const std::string& tail, const std::string& program = "",
                     HANDLE output = nullptr, DWORD flags = 0);

    // Ends the program if it still runs, and removes its files.
    ~ToolRun();

    // Waits for its end. The whole exit code, or STILL_ACTIVE if it doesn't end.
    DWORD wait(DWORD limit = limitMs);

    // What it has written so far.
    std::string output() const;
    std::string errors() const;

    // Waits until its output, or its errors, hold `text`. False if that never happens.
    bool waitForOutput(const std::string& text) const;
    bool waitForErrors(const std::string& text) const;

    DWORD processId() const { return id; }

    // Ends it at once.
    void terminate();

  private:
    const std::string outputPath;
    const std::string errorPath;
    HANDLE process = nullptr;
    DWORD id = 0;
};

// Exit code, output and errors of a whole run.
struct ToolResult {
    DWORD code;
    std::string output;
    std::string errors;
};

ToolResult runTool(const std::string& tail);

// `text` with each `from` replaced by `to`.
std::string replaced(std::string text, const std::string& from, const std::string& to);

// The contents of the file `name` among the golden ones, with line feeds alone as line ends.
std::string golden(const std::string& name);

}  // namespace log_application_test
