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
    // Starts `program` with the raw `tail` behind its quoted path. Its standard error goes into the
    // file `errorFile`, which is created. Calls CreateProcessA. Throws vek::FsError.
    ChildProcess(const std::string& program, const std::string& tail, const std::string& errorFile);

    // The same with `commandLine` as it is.
    ChildProcess(const std::string& program, const CommandLine& commandLine,
                 const std::string& errorFile);

    // Ends the process if it still runs.
    ~ChildProcess();

    DWORD processId() const { return GetProcessId(process); }

    // Blocks until it has ended, for up to `limitMs` milliseconds. Returns whether it has.
    bool waitForEnd(DWORD limitMs);

    // Returns the whole exit code, or STILL_ACTIVE.
    DWORD exitCode() const;

    // Returns the milliseconds from its start until now, or until `waitForEnd` saw its end.
    double elapsedMs() const;

    // Returns what it has written to its standard error.
    std::string errorText() const;

    // Ends it with exit code 99 and blocks until it has gone.
    void terminate();

  private:
    HANDLE process = nullptr;
    std::string errorPath;
    LARGE_INTEGER startTime = {};
    double endedAfterMs = -1;
};

}  // namespace support
