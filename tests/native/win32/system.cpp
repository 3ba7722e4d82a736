// The rest of windows.h: errors, clocks, libraries, exceptions, and what isn't there.
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <mutex>
#include <string>
#include <vector>

#include <windows.h>

// The functions of the tests' own libraries: tests/vek/thread/condition_library.cpp, under the
// names of the .def files there.
extern "C" {
void initializeCondition(CONDITION_VARIABLE* variable);
void wakeOne(CONDITION_VARIABLE* variable);
void wakeAll(CONDITION_VARIABLE* variable);
BOOL sleepOnCondition(CONDITION_VARIABLE* variable, CRITICAL_SECTION* section, DWORD timeoutMs);
void initializeLock(SRWLOCK* lock);
void acquireExclusive(SRWLOCK* lock);
void releaseExclusive(SRWLOCK* lock);
void acquireShared(SRWLOCK* lock);
unsigned sleepCount();
void failSleepsWith(DWORD error);
}

namespace {

thread_local DWORD lastError = 0;

std::chrono::nanoseconds monotonic() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

struct Symbol {
    const char* name;
    FARPROC address;
};

template <class Function>
Symbol symbol(const char* name, Function* function) {
    return {name, reinterpret_cast<FARPROC>(function)};
}

}  // namespace

struct StandInLibrary {
    std::initializer_list<const char*> names;
    std::vector<Symbol> symbols;
};

namespace {

HMODULE libraryOf(const char* name) {
    static std::array<StandInLibrary, 4> libraries = {{
        {{"kernel32", "kernel32.dll"},
         {symbol("InitializeConditionVariable", InitializeConditionVariable),
          symbol("WakeConditionVariable", WakeConditionVariable),
          symbol("WakeAllConditionVariable", WakeAllConditionVariable),
          symbol("SleepConditionVariableCS", SleepConditionVariableCS),
          symbol("InitializeSRWLock", InitializeSRWLock),
          symbol("AcquireSRWLockExclusive", AcquireSRWLockExclusive),
          symbol("ReleaseSRWLockExclusive", ReleaseSRWLockExclusive),
          symbol("AcquireSRWLockShared", AcquireSRWLockShared),
          symbol("ReleaseSRWLockShared", ReleaseSRWLockShared),
          symbol("GetTickCount64", GetTickCount64)}},
        {{"watched_conditions.dll"},
         {symbol("InitializeConditionVariable", initializeCondition),
          symbol("WakeConditionVariable", wakeOne), symbol("WakeAllConditionVariable", wakeAll),
          symbol("SleepConditionVariableCS", sleepOnCondition), symbol("sleepCount", sleepCount),
          symbol("failSleepsWith", failSleepsWith)}},
        {{"older_system.dll"},
         {symbol("InitializeConditionVariable", initializeCondition),
          symbol("WakeConditionVariable", wakeOne), symbol("WakeAllConditionVariable", wakeAll),
          symbol("InitializeSRWLock", initializeLock),
          symbol("AcquireSRWLockExclusive", acquireExclusive),
          symbol("ReleaseSRWLockExclusive", releaseExclusive),
          symbol("AcquireSRWLockShared", acquireShared)}},
        {{"msvcrt"}, {}},
    }};
    for (StandInLibrary& library : libraries) {
        for (const char* const known : library.names) {
            if (std::strcmp(known, name) == 0) {
                return &library;
            }
        }
    }
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

}  // namespace

DWORD GetLastError() {
    return lastError;
}

void SetLastError(DWORD error) {
    lastError = error;
}

DWORD FormatMessageA(DWORD /*flags*/, const void* /*source*/, DWORD code, DWORD /*language*/,
                     char* text, DWORD /*size*/, void* /*arguments*/) {
    const std::string message = "error " + std::to_string(code) + "\r\n";
    // With FORMAT_MESSAGE_ALLOCATE_BUFFER `text` is where the pointer goes.
    char* const copy = strdup(message.c_str());
    std::memcpy(text, &copy, sizeof copy);
    return static_cast<DWORD>(message.size());
}

HANDLE LocalFree(HANDLE memory) {
    std::free(memory);
    return nullptr;
}

BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency) {
    frequency->QuadPart = 1'000'000'000;
    return TRUE;
}

BOOL QueryPerformanceCounter(LARGE_INTEGER* ticks) {
    ticks->QuadPart = monotonic().count();
    return TRUE;
}

ULONGLONG GetTickCount64() {
    return static_cast<ULONGLONG>(
        std::chrono::duration_cast<std::chrono::milliseconds>(monotonic()).count());
}

DWORD GetTickCount() {
    return static_cast<DWORD>(GetTickCount64());
}

void GetSystemTimeAsFileTime(FILETIME* now) {
    constexpr ULONGLONG secondsFrom1601To1970 = 11'644'473'600;
    const std::chrono::nanoseconds sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    const ULONGLONG units =
        static_cast<ULONGLONG>(sinceEpoch.count()) / 100 + secondsFrom1601To1970 * 10'000'000;
    now->dwLowDateTime = static_cast<DWORD>(units);
    now->dwHighDateTime = static_cast<DWORD>(units >> 32);
}

HMODULE LoadLibraryExA(const char* name, HANDLE /*file*/, DWORD /*flags*/) {
    return libraryOf(name);
}

HMODULE GetModuleHandleA(const char* name) {
    return libraryOf(name);
}

FARPROC GetProcAddress(HMODULE library, const char* name) {
    for (const Symbol& known : library->symbols) {
        if (std::strcmp(known.name, name) == 0) {
            return known.address;
        }
    }
    SetLastError(ERROR_PROC_NOT_FOUND);
    return nullptr;
}

BOOL FreeLibrary(HMODULE /*library*/) {
    return TRUE;
}

DWORD GetModuleFileNameA(HMODULE /*library*/, char* /*path*/, DWORD /*size*/) {
    SetLastError(ERROR_NOT_SUPPORTED);
    return 0;
}

// --- exceptions ---

namespace {

// Never destroyed: threads may raise exceptions while the process exits.
std::mutex& handlersLock() {
    static std::mutex& lock = *new std::mutex;
    return lock;
}

struct Registered {
    VectoredHandler handler;
};

std::vector<Registered*>& handlers() {
    static std::vector<Registered*>& all = *new std::vector<Registered*>;
    return all;
}

}  // namespace

void* AddVectoredExceptionHandler(DWORD /*first*/, VectoredHandler handler) {
    auto* const added = new Registered{handler};
    const std::lock_guard<std::mutex> guard(handlersLock());
    handlers().insert(handlers().begin(), added);
    return added;
}

DWORD RemoveVectoredExceptionHandler(void* handler) {
    const std::lock_guard<std::mutex> guard(handlersLock());
    auto* const removed = static_cast<Registered*>(handler);
    const bool known = std::erase(handlers(), removed) != 0;
    if (known) {
        delete removed;
    }
    return known ? 1 : 0;
}

void RaiseException(DWORD code, DWORD /*flags*/, DWORD /*count*/, const ULONG_PTR* /*arguments*/) {
    std::vector<VectoredHandler> asked;
    {
        const std::lock_guard<std::mutex> guard(handlersLock());
        for (const Registered* const registered : handlers()) {
            asked.push_back(registered->handler);
        }
    }
    EXCEPTION_RECORD record = {code};
    EXCEPTION_POINTERS raised = {&record};
    for (const VectoredHandler handler : asked) {
        if (handler(&raised) == EXCEPTION_CONTINUE_EXECUTION) {
            return;
        }
    }
    std::abort();
}

// --- what isn't there ---

void* VirtualAlloc(void* /*address*/, SIZE_T /*size*/, DWORD /*type*/, DWORD /*protection*/) {
    return nullptr;
}

DWORD GetProcessHeaps(DWORD /*most*/, HANDLE* /*heaps*/) {
    return 0;
}

BOOL HeapLock(HANDLE /*heap*/) {
    return FALSE;
}

BOOL HeapUnlock(HANDLE /*heap*/) {
    return FALSE;
}

BOOL HeapWalk(HANDLE /*heap*/, PROCESS_HEAP_ENTRY* /*entry*/) {
    return FALSE;
}

BOOL SetConsoleCtrlHandler(ConsoleHandler /*handler*/, BOOL /*add*/) {
    return TRUE;
}

HANDLE GetStdHandle(DWORD /*stream*/) {
    return nullptr;
}

DWORD GetFileType(HANDLE /*file*/) {
    return FILE_TYPE_UNKNOWN;
}

BOOL GetConsoleScreenBufferInfo(HANDLE /*console*/, CONSOLE_SCREEN_BUFFER_INFO* /*info*/) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}

BOOL SetConsoleTextAttribute(HANDLE /*console*/, WORD /*attribute*/) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}

void OutputDebugStringA(const char* /*text*/) {}

BOOL GetVersionExA(OSVERSIONINFOA* /*version*/) {
    SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
}
