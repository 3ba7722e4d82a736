#include "tests/tools/log_application/support/tool_run.h"

#include <atomic>
#include <vector>

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

// Restricts the handles that a process inherits to two, which must outlive this.
class InheritedHandles : public vek::NoCopy {
  public:
    explicit InheritedHandles(HANDLE (&handles)[2]) {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        room.resize(size);
        if (InitializeProcThreadAttributeList(get(), 1, 0, &size) == 0 ||
            UpdateProcThreadAttribute(get(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles,
                                      sizeof handles, nullptr, nullptr) == 0) {
            throw vek::OsError(GetLastError());
        }
    }
    ~InheritedHandles() { DeleteProcThreadAttributeList(get()); }

    LPPROC_THREAD_ATTRIBUTE_LIST get() {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(room.data());
    }

  private:
    std::vector<char> room;
};

}  // namespace

ToolRun::ToolRun(const std::string& tail, const std::string& program, HANDLE output, DWORD flags)
    : outputPath(ownFile("out")), errorPath(ownFile("err")) {
    const std::string path = program.empty() ? LOG_APPLICATION : program;
    const HANDLE outputFile = createInherited(outputPath);
    const HANDLE errorFile = createInherited(errorPath);
    STARTUPINFOEXA startup = {};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdOutput = output != nullptr ? output : outputFile;
    startup.StartupInfo.hStdError = errorFile;
    HANDLE inherited[] = {startup.StartupInfo.hStdOutput, errorFile};
    InheritedHandles list(inherited);
    startup.lpAttributeList = list.get();
    PROCESS_INFORMATION started = {};
    std::string commandLine = "\"" + path + "\" " + tail;
    const BOOL created = CreateProcessA(path.c_str(), commandLine.data(), nullptr, nullptr, TRUE,
                                        flags | EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr,
                                        &startup.StartupInfo, &started);
    const DWORD failure = GetLastError();
    CloseHandle(outputFile);
    CloseHandle(errorFile);
    if (created == 0) {
        throw vek::FsError(path, failure);
    }
    process = started.hProcess;
    mainThread = started.hThread;
    id = started.dwProcessId;
}

ToolRun::~ToolRun() {
    terminate();
    CloseHandle(mainThread);
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

void ToolRun::suspendMainThread() {
    SuspendThread(mainThread);
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
