// Threads, and the threads that play processes.
#include <cctype>
#include <cstdlib>
#include <memory>
#include <optional>
#include <thread>

#include <process.h>
#include <unistd.h>

#include "handles.h"

using stand_in::objectOf;
using stand_in::Reference;

namespace stand_in {

namespace {

thread_local DWORD currentThreadId = 0;

struct ThreadStart {
    DWORD id;
    std::function<void()> body;
};

void* enterThread(void* given) {
    const std::unique_ptr<ThreadStart> start(static_cast<ThreadStart*>(given));
    currentThreadId = start->id;
    start->body();
    return nullptr;
}

}  // namespace

DWORD newThreadId() {
    static std::atomic<DWORD> last = 0x100;
    return last.fetch_add(4, std::memory_order_relaxed);
}

bool startThread(DWORD id, std::function<void()> body) {
    auto start = std::make_unique<ThreadStart>(ThreadStart{id, std::move(body)});
    pthread_t thread;
    if (pthread_create(&thread, nullptr, enterThread, start.get()) != 0) {
        return false;
    }
    start.release();
    pthread_detach(thread);
    return true;
}

}  // namespace stand_in

DWORD GetCurrentThreadId() {
    if (stand_in::currentThreadId == 0) {
        stand_in::currentThreadId = stand_in::newThreadId();
    }
    return stand_in::currentThreadId;
}

DWORD GetThreadId(HANDLE thread) {
    const Reference object = objectOf(thread, 0);
    return object ? object->id : 0;
}

std::uintptr_t _beginthreadex(void* /*attributes*/, unsigned /*stackSize*/, unsigned (*body)(void*),
                              void* argument, unsigned /*flags*/, unsigned* id) {
    constexpr DWORD allAccess = 0x1FFFFF;
    const Reference thread(new stand_in::Object(false));
    thread->id = stand_in::newThreadId();
    *id = thread->id;
    const HANDLE handle = stand_in::newHandle(thread, allAccess);
    if (handle == nullptr) {
        return 0;
    }
    if (!stand_in::startThread(thread->id, [=] { thread->end(body(argument)); })) {
        CloseHandle(handle);
        return 0;
    }
    return reinterpret_cast<std::uintptr_t>(handle);
}

DWORD GetCurrentProcessId() {
    return static_cast<DWORD>(getpid());
}

HANDLE GetCurrentProcess() {
    return INVALID_HANDLE_VALUE;
}

void Sleep(DWORD milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void YieldProcessor() {
    std::this_thread::yield();
}

void ExitProcess(UINT code) {
    _exit(static_cast<int>(code));
}

// --- processes ---

namespace {

// The words of a command line. No argument of the tests that run here has a quote in it.
std::vector<std::string> wordsOf(const char* commandLine) {
    std::vector<std::string> words;
    std::string word;
    bool quoted = false;
    bool begun = false;
    for (const char* next = commandLine; *next != '\0'; ++next) {
        if (*next == '"') {
            quoted = !quoted;
            begun = true;
        } else if (*next == ' ' && !quoted) {
            if (begun) {
                words.push_back(std::exchange(word, ""));
            }
            begun = false;
        } else {
            word += *next;
            begun = true;
        }
    }
    if (begun) {
        words.push_back(word);
    }
    return words;
}

// What proc_child does, with its exit codes. A process that is terminated doesn't wait.
DWORD run(const std::vector<std::string>& words, const Reference& process) {
    constexpr DWORD longestWaitMs = 60000;
    constexpr DWORD noEvent = 98;
    constexpr DWORD badUsage = 99;
    const auto number = [&words](std::size_t index) {
        return static_cast<DWORD>(std::strtoul(words[index].c_str(), nullptr, 10));
    };
    const std::string command = words.size() > 2 ? words[1] : "";
    if (command == "exit") {
        return number(2);
    }
    if (command == "wait" && words.size() > 3) {
        const Reference event = stand_in::namedObject(words[2].c_str());
        return event && stand_in::waitForAny({event, process}, longestWaitMs) == WAIT_OBJECT_0
                   ? number(3)
                   : noEvent;
    }
    if (command == "sleep" && words.size() > 3) {
        stand_in::waitForAny({process}, number(2));
        return number(3);
    }
    return badUsage;
}

}  // namespace

BOOL CreateProcessA(const char* /*program*/, char* commandLine, SECURITY_ATTRIBUTES* /*ofProcess*/,
                    SECURITY_ATTRIBUTES* /*ofThread*/, BOOL /*inherit*/, DWORD flags,
                    void* /*environment*/, const char* /*directory*/, STARTUPINFOA* /*startup*/,
                    PROCESS_INFORMATION* created) {
    constexpr DWORD allAccess = 0x1FFFFF;
    const std::vector<std::string> words = wordsOf(commandLine);
    if (words.empty() || !words[0].ends_with("\\proc_child.exe")) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return FALSE;
    }
    if ((flags & CREATE_SUSPENDED) == 0) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return FALSE;
    }
    const Reference process(new stand_in::Object(false));
    const Reference thread(new stand_in::Object(false));
    process->id = stand_in::newThreadId();
    thread->id = stand_in::newThreadId();
    thread->body = [process, words] { process->end(run(words, process)); };
    created->dwProcessId = process->id;
    created->dwThreadId = thread->id;
    created->hProcess = stand_in::newHandle(process, allAccess, nullptr, process->id);
    created->hThread = stand_in::newHandle(thread, allAccess);
    return created->hProcess != nullptr && created->hThread != nullptr ? TRUE : FALSE;
}

DWORD ResumeThread(HANDLE thread) {
    constexpr DWORD notResumed = 0xFFFFFFFF;
    const Reference object = objectOf(thread, 0);
    if (!object) {
        return notResumed;
    }
    std::function<void()> body;
    {
        const std::lock_guard<std::mutex> guard(object->mutex);
        body = std::exchange(object->body, nullptr);
    }
    if (!body) {
        return 0;
    }
    return stand_in::startThread(object->id, std::move(body)) ? 1 : notResumed;
}

HANDLE OpenProcess(DWORD access, BOOL /*inherit*/, DWORD processId) {
    Reference process = stand_in::processObject(processId);
    if (processId == 0 || !process) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return stand_in::newHandle(std::move(process), access, nullptr, processId);
}

BOOL TerminateProcess(HANDLE process, UINT code) {
    const Reference object = objectOf(process, PROCESS_TERMINATE);
    if (object) {
        object->end(code);
    }
    return object ? TRUE : FALSE;
}

BOOL GetExitCodeProcess(HANDLE process, DWORD* code) {
    const Reference object = objectOf(process, PROCESS_QUERY_INFORMATION);
    if (object) {
        *code = object->code();
    }
    return object ? TRUE : FALSE;
}

BOOL SetProcessAffinityMask(HANDLE /*process*/, DWORD_PTR /*mask*/) {
    SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
}

BOOL GenerateConsoleCtrlEvent(DWORD /*event*/, DWORD /*group*/) {
    SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
}
