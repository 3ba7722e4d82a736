// log_application_test::OutputPipe: a pipe as a program's output, read late or never.
#pragma once

#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/exception.h"

namespace log_application_test {

// Not thread-safe.
class OutputPipe : public vek::NoCopy {
  public:
    // The size of the pipe.
    static constexpr DWORD roomBytes = 4096;

    // Only the write end is inheritable. Calls CreatePipe. Throws vek::OsError.
    OutputPipe() {
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        if (CreatePipe(&readEnd, &writeEnd, &inherited, roomBytes) == 0) {
            throw vek::OsError(GetLastError());
        }
        SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
    }
    ~OutputPipe() {
        closeWriteEnd();
        closeReadEnd();
    }

    // The write end.
    HANDLE output() const { return writeEnd; }

    // To be called after the program was started, which then holds the only write end.
    void closeWriteEnd() { close(writeEnd); }

    void closeReadEnd() { close(readEnd); }

    // The number of bytes that can be read.
    DWORD waiting() const {
        DWORD size = 0;
        PeekNamedPipe(readEnd, nullptr, 0, nullptr, &size, nullptr);
        return size;
    }

    // Reads until the program has ended.
    std::string readAll() {
        std::string text;
        char room[roomBytes];
        for (DWORD size = 0;
             ReadFile(readEnd, room, sizeof room, &size, nullptr) != 0 && size != 0;) {
            text.append(room, size);
        }
        return text;
    }

  private:
    static void close(HANDLE& end) {
        if (end != nullptr) {
            CloseHandle(end);
            end = nullptr;
        }
    }

    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
};

}  // namespace log_application_test
