// support::ChildProcess: a program that is started with an exact raw command line.
#pragma once

#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace support {

// A whole raw command line, with the program's name as its first part.
struct CommandLine {
    std::string text;
};

class ChildProcess : public vek::NoCopy {
  public:
    // Starts `program` with `tail`, raw, behind its quoted path. Its standard error goes into the
    // file `errorFile`, which is made. Calls CreateProcessA. Throws vek::FsError.
    ChildProcess(const std::string& program, const std::string& tail, const std::string& errorFile);

    // The same with `commandLine` as it is.
    ChildProcess(const std::string& program, const CommandLine& commandLine,
                 const std::string& errorFile);

    // Ends the process if it still runs.
    ~ChildProcess();

    DWORD processId() const { return GetProcessId(process); }

    // Waits up to `limitMs` milliseconds for its end. True if it has ended.
    bool waitForEnd(DWORD limitMs);

    // The whole exit code, or STILL_ACTIVE.
    DWORD exitCode() const;

    // Milliseconds since its start, up to its end once `waitForEnd` has seen that.
    double elapsedMs() const;

    // What it has written to its standard error.
    std::string errorText() const;

    // Ends it at once, with exit code 99, and waits until it has gone.
    void terminate();

  private:
    HANDLE process = nullptr;
    std::string errorPath;
    LARGE_INTEGER startTime = {};
    double endedAfterMs = -1;
};

}  // namespace support
