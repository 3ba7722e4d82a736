// os_child.exe COMMAND [ARGUMENT...]: the other process of the tests of the flat system functions.
// Ends with 0 if the command succeeded, or as the command says; with 99 for a command unknown.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "vek/base/windows.h"
#include "vek/os/objects.h"
#include "vek/os/shared_memory.h"

namespace {

using Arguments = std::vector<std::string>;

// An upper bound; the tests end their children long before.
constexpr std::uint32_t patienceMs = 60000;

// exit CODE
int exitWith(const Arguments& arguments) {
    return static_cast<int>(std::stoul(arguments.at(0)));
}

// wait-event NAME CODE: ends with CODE once the event is signalled.
int waitEvent(const Arguments& arguments) {
    HANDLE event = nullptr;
    std::uint32_t waited = WAIT_TIMEOUT;
    const bool signalled = vek::os::openEvent(&event, arguments.at(0).c_str()) != 0 &&
                           vek::os::waitObject(event, patienceMs, &waited) != 0 &&
                           waited == WAIT_OBJECT_0;
    return signalled ? static_cast<int>(std::stoul(arguments.at(1))) : 98;
}

// set-event NAME
int setEvent(const Arguments& arguments) {
    HANDLE event = nullptr;
    return vek::os::openEvent(&event, arguments.at(0).c_str()) != 0 && vek::os::setEvent(event) != 0
               ? 0
               : 1;
}

// release-semaphore NAME: ends with the error number.
int releaseSemaphore(const Arguments& arguments) {
    HANDLE semaphore = nullptr;
    return vek::os::openSemaphore(&semaphore, arguments.at(0).c_str()) != 0 &&
                   vek::os::releaseSemaphore(semaphore) != 0
               ? 0
               : static_cast<int>(GetLastError());
}

// abandon-mutex NAME: takes the mutex, and ends without giving it back.
int abandonMutex(const Arguments& arguments) {
    HANDLE mutex = nullptr;
    std::uint32_t waited = WAIT_TIMEOUT;
    return vek::os::openMutex(&mutex, arguments.at(0).c_str()) != 0 &&
                   vek::os::waitObject(mutex, patienceMs, &waited) != 0 && waited == WAIT_OBJECT_0
               ? 0
               : 1;
}

// raise-text NAME SIZE: turns the text in the shared memory into capitals.
int raiseText(const Arguments& arguments) {
    vek::os::SharedMemory memory = {};
    if (vek::os::openSharedMemory(&memory, std::stoul(arguments.at(1)), arguments.at(0).c_str()) ==
        0) {
        return 1;
    }
    for (char* at = static_cast<char*>(memory.view); *at != '\0'; ++at) {
        *at = static_cast<char>(std::toupper(*at));
    }
    return 0;
}

// report-start FILE: writes how this process was started.
int reportStart(const Arguments& arguments) {
    STARTUPINFOA startup = {};
    GetStartupInfoA(&startup);
    std::FILE* file = std::fopen(arguments.at(0).c_str(), "wb");
    if (file == nullptr) {
        return 1;
    }
    std::fprintf(file, "flags=%lu show=%u priority=%lu", startup.dwFlags, startup.wShowWindow,
                 GetPriorityClass(GetCurrentProcess()));
    std::fclose(file);
    return 0;
}

// use-event HANDLE: signals the event by a handle of the parent.
int useEvent(const Arguments& arguments) {
    return SetEvent(reinterpret_cast<HANDLE>(std::stoul(arguments.at(0)))) != 0 ? 0 : 1;
}

int run(const std::string& command, const Arguments& arguments) {
    const struct {
        const char* name;
        int (*run)(const Arguments&);
    } commands[] = {
        {"exit", exitWith},
        {"wait-event", waitEvent},
        {"set-event", setEvent},
        {"release-semaphore", releaseSemaphore},
        {"abandon-mutex", abandonMutex},
        {"raise-text", raiseText},
        {"report-start", reportStart},
        {"use-event", useEvent},
    };
    for (const auto& known : commands) {
        if (command == known.name) {
            return known.run(arguments);
        }
    }
    return 99;
}

}  // namespace

int main(int argc, char** argv) {
    return argc < 2 ? 99 : run(argv[1], Arguments(argv + 2, argv + argc));
}
