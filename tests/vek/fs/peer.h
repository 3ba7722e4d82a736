// The second process of the tests of files; see peer.cpp.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/fs/program_path.h"

namespace vek::test {

// Upper bound of every wait for the peer, in milliseconds.
inline constexpr DWORD peerLimitMs = 30000;

class Peer : public NoCopy {
  public:
    explicit Peer(const std::string& arguments, const std::string& program = peerProgram()) {
        std::string commandLine = "\"" + program + "\" " + arguments;
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION started = {};
        // Detached, so that it may make a console of its own.
        if (CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS,
                           nullptr, nullptr, &startup, &started) == 0) {
            ADD_FAILURE() << "the peer doesn't start: error " << GetLastError();
            return;
        }
        CloseHandle(started.hThread);
        process = started.hProcess;
    }

    ~Peer() {
        if (WaitForSingleObject(process, 0) == WAIT_TIMEOUT) {
            TerminateProcess(process, 99);
            WaitForSingleObject(process, INFINITE);
        }
        CloseHandle(process);
    }

    static std::string peerProgram() { return programDirectory() + "\\fs_peer.exe"; }

    // Waits for its end; -1 and a failure if that doesn't come.
    int exitCode() const {
        DWORD code = 0;
        if (WaitForSingleObject(process, peerLimitMs) != WAIT_OBJECT_0 ||
            GetExitCodeProcess(process, &code) == 0) {
            ADD_FAILURE() << "the peer doesn't end";
            return -1;
        }
        return static_cast<int>(code);
    }

  private:
    HANDLE process = nullptr;
};

// An event that the peer opens by its name.
class PeerEvent : public NoCopy {
  public:
    explicit PeerEvent(const std::string& name)
        : handle(CreateEventA(nullptr, TRUE, FALSE, name.c_str())) {}
    ~PeerEvent() { CloseHandle(handle); }

    void set() const { SetEvent(handle); }
    bool isSetWithin(DWORD limitMs) const {
        return WaitForSingleObject(handle, limitMs) == WAIT_OBJECT_0;
    }

  private:
    HANDLE handle;
};

}  // namespace vek::test
