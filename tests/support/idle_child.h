// A child process that does nothing but live.
#pragma once

#include <gtest/gtest.h>

#include "vek/base/windows.h"

namespace support {

// Inherits every handle that may be inherited, and lives until this object ends.
class IdleChild {
  public:
    IdleChild() {
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        EXPECT_NE(CreatePipe(&input, &inputEnd, &inherited, 0), 0);
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = input;
        char command[] = "cmd /c pause";
        EXPECT_NE(CreateProcessA(nullptr, command, nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                 &startup, &child),
                  0);
    }

    ~IdleChild() {
        TerminateProcess(child.hProcess, 0);
        WaitForSingleObject(child.hProcess, INFINITE);
        for (const HANDLE handle : {child.hProcess, child.hThread, input, inputEnd}) {
            CloseHandle(handle);
        }
    }

    IdleChild(const IdleChild&) = delete;
    IdleChild& operator=(const IdleChild&) = delete;

    bool lives() const { return WaitForSingleObject(child.hProcess, 0) == WAIT_TIMEOUT; }

  private:
    HANDLE input = nullptr;
    HANDLE inputEnd = nullptr;
    PROCESS_INFORMATION child = {};
};

}  // namespace support
