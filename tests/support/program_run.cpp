#include "tests/support/program_run.h"

#include <cstring>

#include "tests/support/files.h"
#include "vek/exception.h"

namespace support {

namespace {

constexpr DWORD limitMs = 60000;

std::string quoted(const std::string& argument) {
    std::string result = "\"";
    std::size_t backslashes = 0;
    for (const char byte : argument) {
        // Backslashes count for themselves unless a quote follows.
        result.append(byte == '"' ? backslashes + 1 : 0, '\\');
        backslashes = byte == '\\' ? backslashes + 1 : 0;
        result += byte;
    }
    return result + std::string(backslashes, '\\') + "\"";
}

std::string blockOf(const Environment& environment) {
    std::string block;
    char* const own = GetEnvironmentStringsA();
    for (const char* entry = own; *entry != '\0'; entry += std::strlen(entry) + 1) {
        const std::string text = entry;
        if (!text.starts_with("VEKLOG_") && !text.starts_with("VEKCRIME_")) {
            block += text + '\0';
        }
    }
    FreeEnvironmentStringsA(own);
    for (const auto& [name, value] : environment) {
        block += name + "=" + value + '\0';
    }
    return block + '\0';
}

// A file of a name of its own that children inherit, and that goes when this does.
class OutputFile {
  public:
    OutputFile() {
        char name[MAX_PATH] = {};
        GetTempFileNameA(temporaryDirectory().c_str(), "run", 0, name);
        path = name;
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        handle = CreateFileA(name, FILE_APPEND_DATA,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherited,
                             CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            throw vek::FsError(path, GetLastError());
        }
    }
    ~OutputFile() {
        CloseHandle(handle);
        DeleteFileA(path.c_str());
    }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::string text() const {
        std::string result = readFile(path);
        for (std::size_t at = 0; (at = result.find("\r\n", at)) != std::string::npos;) {
            result.erase(at, 1);
        }
        return result;
    }

    HANDLE handle;

  private:
    std::string path;
};

}  // namespace

std::ostream& operator<<(std::ostream& out, const ProgramOutput& run) {
    return out << "exit code " << run.exitCode << ", output <" << run.output << ">, error <"
               << run.error << ">";
}

ProgramOutput runProgram(const std::string& program, const std::vector<std::string>& arguments,
                         const Environment& environment, const std::string& directory) {
    const OutputFile output;
    const OutputFile error;
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output.handle;
    startup.hStdError = error.handle;
    std::string commandLine = quoted(program);
    for (const std::string& argument : arguments) {
        commandLine += " " + quoted(argument);
    }
    std::string block = blockOf(environment);
    PROCESS_INFORMATION started = {};
    if (CreateProcessA(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, block.data(),
                       directory.empty() ? nullptr : directory.c_str(), &startup, &started) == 0) {
        throw vek::FsError(program, GetLastError());
    }
    CloseHandle(started.hThread);
    DWORD exitCode = STILL_ACTIVE;
    if (WaitForSingleObject(started.hProcess, limitMs) == WAIT_OBJECT_0) {
        GetExitCodeProcess(started.hProcess, &exitCode);
    } else {
        TerminateProcess(started.hProcess, 99);
        WaitForSingleObject(started.hProcess, INFINITE);
    }
    CloseHandle(started.hProcess);
    return {exitCode, output.text(), error.text()};
}

}  // namespace support
