// soak_installation: an installation of the fake service and of the helper, in this Wine prefix,
// for tests/soak. Reads one command a line from its standard input, does it with the real service
// manager and real files, and answers each with one line; ends with the input. The commands:
//
//     lay                       makes the installation: version 1 installed, version 2 the new one
//     clean                     ends the helper and the service, and removes everything
//     behave VERSION KEY VALUE  sets how a version of the service behaves (fake_service.cpp)
//     register, run             registers the service; registers it, starts it, waits until it runs
//     start                     starts the service; doesn't wait
//     write FILE TEXT           FILE is installed, kept, fresh or pathinfo
//     delete FILE, readonly FILE
//     grow FILE BYTES           makes it as long, with zeros
//     hold FILE, release        opens it without sharing it; closes it
//     env NAME [VALUE]          sets or removes a variable of this process and of the helper
//     helper                    starts the helper
//     ended MS                  waits for its end: "code N" or "code N, message TEXT", or "runs"
//     kill                      ends the helper by TerminateProcess: "killed", or "had ended"
//     kill-in-copy MS           waits until a part of the new version is installed; kills it then
//     journal MS TEXT           waits until the service's journal ends with TEXT: "yes" or "no"
//     state MS N                the same for the service's state
//     exists MS FILE, gone MS FILE, complete MS FILE
//                               the same for a file; "complete" as soon as it is as large as the
//                               new one
//     line TEXT                 has cmd run TEXT in the directory of the installation, as an
//     operator look                      "INSTALLED KEPT STATE RUNNING"; the first two are old,
//     new, part,
//                               previous, other or none, and RUNNING is old, new or none
//
// A command that can't be done is answered by "error" and the reason. The exit code is 1 if the
// service couldn't be removed.
#include <array>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <vector>

#include "tests/support/files.h"
#include "tests/support/helper_fixture.h"
#include "vek/exception.h"

namespace {

using support::limitMs;
using support::TolmarService;

constexpr char previousVersion[] = "the version before";

// The fixture of the tests, used outside a test.
class Installation : public support::HelperFixture {
  public:
    Installation() { SetUp(); }
    ~Installation() override {
        helperProcess.reset();
        release();
        // Read-only files can't be deleted.
        for (const char* const file : {"installed", "kept", "fresh", "pathinfo"}) {
            SetFileAttributesA(path(file).c_str(), FILE_ATTRIBUTE_NORMAL);
        }
        TearDown();
    }
    void TestBody() override {}

    std::string execute(const std::string& command, std::istream& arguments);

  private:
    std::string path(const std::string& file) const {
        return file == "installed"  ? installed()
               : file == "kept"     ? kept()
               : file == "fresh"    ? fresh()
               : file == "pathinfo" ? pathInfo()
                                    : throw vek::RuntimeError("no file is called '" + file + "'");
    }
    std::string contentOf(const std::string& file) const;
    std::string look() const;
    std::string ended(DWORD ms);
    std::string kill();
    std::string killInCopy(unsigned ms);
    std::string change(const std::string& command, std::istream& arguments);
    std::string await(const std::string& command, std::istream& arguments);
    void grow(const std::string& file, LONG size) const;
    void hold(const std::string& file);
    void release();
    void runLine(const std::string& line) const;

    std::unique_ptr<support::ChildProcess> helperProcess;
    HANDLE held = INVALID_HANDLE_VALUE;
};

std::string restOf(std::istream& arguments) {
    std::string rest;
    std::getline(arguments >> std::ws, rest);
    return rest;
}

std::string yesOrNo(bool value) {
    return value ? "yes" : "no";
}

std::uintmax_t sizeOf(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data);
    return std::uintmax_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
}

// True if `whole` begins with all of `part`. They may be large.
bool isBeginning(const std::string& part, const std::string& whole) {
    std::ifstream first(part, std::ios::binary);
    std::ifstream second(whole, std::ios::binary);
    std::vector<char> firstBlock(1 << 20);
    std::vector<char> secondBlock(firstBlock.size());
    const auto blockSize = static_cast<std::streamsize>(firstBlock.size());
    while (first.read(firstBlock.data(), blockSize), first.gcount() > 0) {
        second.read(secondBlock.data(), first.gcount());
        if (second.gcount() != first.gcount() ||
            std::memcmp(firstBlock.data(), secondBlock.data(),
                        static_cast<std::size_t>(first.gcount())) != 0) {
            return false;
        }
    }
    return true;
}

std::string Installation::contentOf(const std::string& file) const {
    const std::string name = path(file);
    if (!support::exists(name)) {
        return "none";
    }
    if (support::exists(fresh()) && isBeginning(name, fresh())) {
        return sizeOf(name) == sizeOf(fresh()) ? "new" : "part";
    }
    const int version = versionOf(name);
    return version == 1                                 ? "old"
           : version == 2 && !support::exists(fresh())  ? "new"
           : support::readFile(name) == previousVersion ? "previous"
                                                        : "other";
}

std::string Installation::look() const {
    const int running = runningVersion();
    return contentOf("installed") + " " + contentOf("kept") + " " +
           std::to_string(TolmarService::state()) + " " +
           (running == 1   ? "old"
            : running == 2 ? "new"
                           : "none");
}

std::string Installation::ended(DWORD ms) {
    if (!helperProcess->waitForEnd(ms)) {
        return "runs";
    }
    const std::string error = helperProcess->errorText();
    return "code " + std::to_string(helperProcess->exitCode()) +
           (error.empty() ? "" : ", message " + error.substr(0, error.find('\n')));
}

std::string Installation::kill() {
    if (helperProcess->waitForEnd(0)) {
        return "had ended";
    }
    helperProcess->terminate();
    return helperProcess->exitCode() == 99 ? "killed" : "had ended";
}

// Looks without a pause: the copy is a matter of milliseconds.
std::string Installation::killInCopy(unsigned ms) {
    const ULONGLONG end = GetTickCount64() + ms;
    while (GetTickCount64() < end) {
        // In this order: ahead of the move there is another tolmar.exe.
        if (support::exists(kept()) && support::exists(installed())) {
            return kill();
        }
    }
    return "no";
}

void Installation::grow(const std::string& file, LONG size) const {
    const HANDLE handle = CreateFileA(path(file).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    const bool grown =
        SetFilePointer(handle, size, nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER &&
        SetEndOfFile(handle) != 0;
    CloseHandle(handle);
    if (!grown) {
        throw vek::FsError(path(file), GetLastError());
    }
}

void Installation::hold(const std::string& file) {
    held = CreateFileA(path(file).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
    if (held == INVALID_HANDLE_VALUE) {
        throw vek::FsError(path(file), GetLastError());
    }
}

void Installation::release() {
    if (held != INVALID_HANDLE_VALUE) {
        CloseHandle(held);
        held = INVALID_HANDLE_VALUE;
    }
}

// The line may fail: one that finds nothing to do does.
void Installation::runLine(const std::string& line) const {
    std::array<char, MAX_PATH> before = {};
    std::array<char, MAX_PATH> shell = {};
    GetCurrentDirectoryA(MAX_PATH, before.data());
    GetEnvironmentVariableA("ComSpec", shell.data(), MAX_PATH);
    SetCurrentDirectoryA(installedDirectory.c_str());
    if (line == "taskkill /f /fi \"services eq tolmar\"" &&
        GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr) {
        TolmarService::endProcess();  // Wine's taskkill has no filters
    } else {
        support::ChildProcess program(shell.data(), "/c " + line, root + "\\line.txt");
        if (!program.waitForEnd(limitMs)) {
            SetCurrentDirectoryA(before.data());
            throw vek::RuntimeError("doesn't end: " + line);
        }
    }
    SetCurrentDirectoryA(before.data());
}

// The commands that change something. Returns nothing for any other.
std::string Installation::change(const std::string& command, std::istream& arguments) {
    std::string file;
    if (command == "behave") {
        int version = 0;
        std::string key;
        int value = 0;
        arguments >> version >> key >> value;
        behave(version, key.c_str(), value);
    } else if (command == "register") {
        registerService();
    } else if (command == "run") {
        runService();
    } else if (command == "start") {
        TolmarService::start();
    } else if (command == "write") {
        arguments >> file;
        support::writeFile(path(file), restOf(arguments));
    } else if (command == "delete") {
        arguments >> file;
        // The process of a service that has stopped may still be ending.
        if (!support::waitUntil([&] { return DeleteFileA(path(file).c_str()) != 0; }, limitMs)) {
            throw vek::FsError(path(file), GetLastError());
        }
    } else if (command == "readonly") {
        arguments >> file;
        SetFileAttributesA(path(file).c_str(), FILE_ATTRIBUTE_READONLY);
    } else if (command == "grow") {
        LONG size = 0;
        arguments >> file >> size;
        grow(file, size);
    } else if (command == "hold") {
        arguments >> file;
        hold(file);
    } else if (command == "release") {
        release();
    } else if (command == "env") {
        std::string value;
        arguments >> file >> value;
        SetEnvironmentVariableA(file.c_str(), value.empty() ? nullptr : value.c_str());
    } else if (command == "helper") {
        helperProcess = startHelper(installedDirectory);
    } else if (command == "line") {
        runLine(restOf(arguments));
    } else {
        return "";
    }
    return "ok";
}

// The commands that wait. Returns nothing for any other.
std::string Installation::await(const std::string& command, std::istream& arguments) {
    unsigned ms = 0;
    if (command == "kill") {
        return kill();
    }
    arguments >> ms;
    const std::string what = restOf(arguments);
    if (command == "ended") {
        return ended(ms);
    }
    if (command == "kill-in-copy") {
        return killInCopy(ms);
    }
    std::function<bool()> condition;
    if (command == "journal") {
        condition = [&] { return journal().ends_with(what); };
    } else if (command == "state") {
        condition = [state = std::stoul(what)] { return TolmarService::state() == state; };
    } else if (command == "exists") {
        condition = [file = path(what)] { return support::exists(file); };
    } else if (command == "gone") {
        condition = [file = path(what)] { return !support::exists(file); };
    } else if (command == "complete") {
        condition = [file = path(what), size = sizeOf(fresh())] {
            return support::isReadable(file) && sizeOf(file) == size;
        };
    }
    return condition ? yesOrNo(support::waitUntil(condition, ms)) : "";
}

std::string Installation::execute(const std::string& command, std::istream& arguments) {
    if (command == "look") {
        return look();
    }
    std::string answer = change(command, arguments);
    if (answer.empty()) {
        answer = await(command, arguments);
    }
    return answer.empty() ? throw vek::RuntimeError("no such command: " + command) : answer;
}

std::string answerTo(const std::string& line, std::unique_ptr<Installation>& installation) {
    std::istringstream arguments(line);
    std::string command;
    arguments >> command;
    try {
        if (command == "lay") {
            installation = std::make_unique<Installation>();
        } else if (command == "clean") {
            installation.reset();
        } else if (installation == nullptr) {
            return "error: nothing is installed";
        } else {
            return installation->execute(command, arguments);
        }
        return "ok";
    } catch (const std::exception& error) {
        return std::string("error: ") + error.what();
    }
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    std::unique_ptr<Installation> installation;
    for (std::string line; std::getline(std::cin, line);) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        const std::string answer = answerTo(line, installation);
        // What failed has been printed.
        std::cout << (testing::Test::HasFailure() ? "error: see above" : answer) << std::endl;
    }
    installation.reset();
    return TolmarService::state() == 0 ? 0 : 1;
}
