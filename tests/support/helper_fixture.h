// support::HelperFixture: an installation of the fake service and of tolmarhlp.exe in a directory
// of their own, and the state that it is in. It uses the real service manager, where it owns the
// service "tolmar": the tests need a machine or a Wine prefix of their own.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/child_process.h"
#include "tests/support/tolmar_service.h"

namespace support {

// An upper bound for every wait, far above what it takes.
constexpr unsigned limitMs = 40000;

// An upper bound for a run in which the helper waits for nothing: far above what a process takes on
// a busy machine, and below every loop of the helper that runs out (15 and 90 seconds).
constexpr double atOnceMs = 12000;

// The state after a run of the helper. A version is 0 if there is no file, and -1 if it is not one
// of the fake service's.
struct EndState {
    int installed;       // version of the file tolmar.exe in the installed directory
    int kept;            // of tolmar.old beside it
    int fresh;           // of tolmar.exe in the directory that QadDataDir names
    DWORD serviceState;  // 0 if there is no service
    int running;         // the version that runs as the service

    bool operator==(const EndState&) const = default;
};
std::ostream& operator<<(std::ostream& out, const EndState& state);

// How a run of the helper ended.
struct Outcome {
    DWORD exitCode;
    std::string errorText;
    double milliseconds;
};

class HelperFixture : public testing::Test {
  protected:
    // Makes the directories: tolmarhlp.exe with a pathinfo.ini, version 2 as the new executable,
    // and version 1 in `installed`, as a service that is not registered yet.
    void SetUp() override;

    // Stops and removes the service, whatever state it is in, and all files.
    void TearDown() override;

    // Moves the installation to another directory below the root, before the service is registered.
    void installInto(const std::string& leafName);

    // The same, with the name chosen so that the whole path has `length` bytes.
    void installIntoPathOfLength(std::size_t length);

    // Sets `key` for `version` of the fake service; it reads it at its start.
    void behave(int version, const char* key, int value);

    // Registers version 1 as the service; starts it and waits until it runs; both.
    void registerService();
    void startService();
    void runService();

    // Starts the helper, by its quoted path; `tail` is its raw command tail.
    std::unique_ptr<ChildProcess> startHelper(const std::string& tail);
    // Starts it with a whole raw command line.
    std::unique_ptr<ChildProcess> startHelper(const CommandLine& commandLine);

    // Runs it to its end, for at most limitMs.
    Outcome runHelper(const std::string& tail);
    Outcome finish(ChildProcess& helper);

    EndState endState() const;
    int versionOf(const std::string& path) const;
    int runningVersion() const;

    // Every state that the service reported: "1 starting, 1 running".
    std::string journal() const;

    std::string root;                // holds everything; removed at the end
    std::string installedDirectory;  // the directory of the command line
    std::string freshDirectory;      // what QadDataDir names
    std::string helperDirectory;     // holds tolmarhlp.exe and pathinfo.ini

    std::string helper() const { return helperDirectory + "\\tolmarhlp.exe"; }
    std::string installed() const { return installedDirectory + "\\tolmar.exe"; }
    std::string kept() const { return installedDirectory + "\\tolmar.old"; }
    std::string fresh() const { return freshDirectory + "\\tolmar.exe"; }
    std::string pathInfo() const { return helperDirectory + "\\pathinfo.ini"; }
    std::string guiFile() const { return installedDirectory + "\\tolmar.gui"; }

  private:
    std::string settings() const { return installedDirectory + "\\tolmar.settings"; }
};

}  // namespace support
