#include "tests/support/child_process.h"

#include "tests/support/files.h"
#include "vek/exception.h"

namespace support {

namespace {

HANDLE createInherited(const std::string& path) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    const HANDLE file = CreateFileA(path.c_str(), FILE_APPEND_DATA,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        throw vek::FsError(path, GetLastError());
    }
    return file;
}

}  // namespace

ChildProcess::ChildProcess(const std::string& program, const std::string& tail,
                           const std::string& errorFile)
    : ChildProcess(program, CommandLine{"\"" + program + "\"" + (tail.empty() ? "" : " " + tail)},
                   errorFile) {}

ChildProcess::ChildProcess(const std::string& program, const CommandLine& commandLine,
                           const std::string& errorFile)
    : errorPath(errorFile) {
    const HANDLE error = createInherited(errorFile);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdError = error;
    PROCESS_INFORMATION started = {};
    std::string text = commandLine.text;
    QueryPerformanceCounter(&startTime);
    const BOOL created = CreateProcessA(program.c_str(), text.data(), nullptr, nullptr, TRUE, 0,
                                        nullptr, nullptr, &startup, &started);
    const DWORD failure = GetLastError();
    CloseHandle(error);
    if (created == 0) {
        throw vek::FsError(program, failure);
    }
    CloseHandle(started.hThread);
    process = started.hProcess;
}

ChildProcess::~ChildProcess() {
    terminate();
    CloseHandle(process);
}

bool ChildProcess::waitForEnd(DWORD limitMs) {
    if (WaitForSingleObject(process, limitMs) != WAIT_OBJECT_0) {
        return false;
    }
    if (endedAfterMs < 0) {
        endedAfterMs = elapsedMs();
    }
    return true;
}

DWORD ChildProcess::exitCode() const {
    DWORD code = 0;
    GetExitCodeProcess(process, &code);
    return code;
}

double ChildProcess::elapsedMs() const {
    if (endedAfterMs >= 0) {
        return endedAfterMs;
    }
    LARGE_INTEGER now;
    LARGE_INTEGER frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return 1000.0 * static_cast<double>(now.QuadPart - startTime.QuadPart) /
           static_cast<double>(frequency.QuadPart);
}

std::string ChildProcess::errorText() const {
    return readFile(errorPath);
}

void ChildProcess::terminate() {
    if (!waitForEnd(0)) {
        TerminateProcess(process, 99);
        waitForEnd(INFINITE);
    }
}

}  // namespace support
