#include "tests/tools/log_application/tool_run.h"

#include <atomic>

#include "tests/support/files.h"
#include "vek/base/text.h"
#include "vek/exception.h"

namespace log_application_test {

namespace {

// A file of this process and of no other.
std::string ownFile(const std::string& kind) {
    static std::atomic<int> number = 0;
    return support::temporaryDirectory() + "\\log_application." +
           std::to_string(GetCurrentProcessId()) + "." + std::to_string(++number) + "." + kind;
}

HANDLE createInherited(const std::string& path) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        throw vek::FsError(path, GetLastError());
    }
    return file;
}

}  // namespace

ToolRun::ToolRun(const std::string& tail, const std::string& program, HANDLE output)
    : outputPath(ownFile("out")), errorPath(ownFile("err")) {
    const std::string path = program.empty() ? LOG_APPLICATION : program;
    const HANDLE outputFile = createInherited(outputPath);
    const HANDLE errorFile = createInherited(errorPath);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output != nullptr ? output : outputFile;
    startup.hStdError = errorFile;
    PROCESS_INFORMATION started = {};
    std::string commandLine = "\"" + path + "\" " + tail;
    const BOOL created = CreateProcessA(path.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0,
                                        nullptr, nullptr, &startup, &started);
    const DWORD failure = GetLastError();
    CloseHandle(outputFile);
    CloseHandle(errorFile);
    if (created == 0) {
        throw vek::FsError(path, failure);
    }
    CloseHandle(started.hThread);
    process = started.hProcess;
    id = started.dwProcessId;
}

ToolRun::~ToolRun() {
    terminate();
    CloseHandle(process);
    support::waitUntil([this] { return DeleteFileA(outputPath.c_str()) != 0; }, 2000);
    support::waitUntil([this] { return DeleteFileA(errorPath.c_str()) != 0; }, 2000);
}

DWORD ToolRun::wait(DWORD limit) {
    WaitForSingleObject(process, limit);
    DWORD code = STILL_ACTIVE;
    GetExitCodeProcess(process, &code);
    return code;
}

void ToolRun::terminate() {
    TerminateProcess(process, 99);
    WaitForSingleObject(process, limitMs);
}

std::string ToolRun::output() const {
    return support::readFile(outputPath);
}

std::string ToolRun::errors() const {
    return replaced(support::readFile(errorPath), "\r\n", "\n");
}

bool ToolRun::waitForOutput(const std::string& text) const {
    return support::waitUntil([&] { return output().find(text) != std::string::npos; }, limitMs);
}

bool ToolRun::waitForErrors(const std::string& text) const {
    return support::waitUntil([&] { return errors().find(text) != std::string::npos; }, limitMs);
}

ToolResult runTool(const std::string& tail) {
    ToolRun run(tail);
    const DWORD code = run.wait();
    return {code, run.output(), run.errors()};
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    vek::replaceAll(text, from, to);
    return text;
}

std::string golden(const std::string& name) {
    return replaced(support::readFile(std::string(GOLDEN_DIRECTORY) + "/" + name), "\r\n", "\n");
}

}  // namespace log_application_test
