// log_application_test::OutputPipe: a pipe as a program's output, which may be emptied or not.
#pragma once

#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/exception.h"

namespace log_application_test {

// For one thread at a time.
class OutputPipe : public vek::NoCopy {
  public:
    // As many bytes have room in it.
    static constexpr DWORD roomBytes = 4096;

    // Only the end for writing is inherited. Throws vek::OsError.
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

    // What the program writes to.
    HANDLE output() const { return writeEnd; }

    // To be called once the program has been started, so that it alone has that end.
    void closeWriteEnd() { close(writeEnd); }

    void closeReadEnd() { close(readEnd); }

    // The bytes that nobody has taken yet.
    DWORD waiting() const {
        DWORD size = 0;
        PeekNamedPipe(readEnd, nullptr, 0, nullptr, &size, nullptr);
        return size;
    }

    // All that comes, until the program has ended.
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
