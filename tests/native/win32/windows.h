// A stand-in for <windows.h>, on POSIX threads, for the machine that builds: what the concurrency
// code and its tests use of the system, so that the thread sanitizer can watch them. Nothing else
// is here; a source that needs more doesn't compile, or doesn't link.
//
// The sanitizer must not see an order between threads that Windows doesn't promise. So each object
// has a mutex of its own, and the table of handles uses nothing that the sanitizer counts as
// synchronisation: a handle that is passed to another thread has to be passed properly.
//
// Differences from Windows:
//   - A wait on an object orders the calling thread also after earlier waits of other threads on
//     the same object. A race between such threads may go unnoticed.
//   - A thread counts as ended when its function has returned. Its thread_local objects are
//     destroyed a moment later.
//   - A critical section never spins. A condition variable, a slim lock and a critical section are
//     larger, and a slim lock is that of POSIX, which prefers readers.
//   - A process is a thread of this process that runs one of three commands of proc_child.exe:
//     "exit", "wait" and "sleep" (tests/vek/proc/child.cpp). It inherits nothing and has no
//     streams. Any other program counts as missing.
//   - Named objects are events alone, known by the hash of their names, and only in this process.
//   - Libraries are tables of functions: "kernel32" with what is looked up at run time, those of
//   the
//     tests, which keep their state when they are freed, and an empty "msvcrt".
//   - Vectored handlers are called by RaiseException alone. An exception that none of them takes
//     ends the process.
//   - An error's text is "error" and its number. There is no console, and no debugger.
//   - A long has 64 bits, and a pointer too.
#pragma once

#include <cstddef>
#include <cstdint>

#include <pthread.h>

#define WINAPI
#define CALLBACK
#define TRUE 1
#define FALSE 0
#define MAX_PATH 260
#define INFINITE 0xFFFFFFFFu
#define MAXIMUM_WAIT_OBJECTS 64

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using SHORT = std::int16_t;
using DWORD = std::uint32_t;
using UINT = unsigned;
using LONG = std::int32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using SIZE_T = std::size_t;
using HANDLE = void*;
using HMODULE = struct StandInLibrary*;
using FARPROC = std::intptr_t (*)();

#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(std::intptr_t{-1}))
#define ULongToHandle(number) (reinterpret_cast<HANDLE>(std::uintptr_t{number}))

// --- errors ---

#define ERROR_SUCCESS 0u
#define ERROR_FILE_NOT_FOUND 2u
#define ERROR_ACCESS_DENIED 5u
#define ERROR_INVALID_HANDLE 6u
#define ERROR_NOT_ENOUGH_MEMORY 8u
#define ERROR_NOT_SUPPORTED 50u
#define ERROR_INVALID_PARAMETER 87u
#define ERROR_MOD_NOT_FOUND 126u
#define ERROR_PROC_NOT_FOUND 127u
#define ERROR_ALREADY_EXISTS 183u
#define ERROR_POSSIBLE_DEADLOCK 1131u
#define ERROR_TIMEOUT 1460u

DWORD GetLastError();
void SetLastError(DWORD error);

#define FORMAT_MESSAGE_ALLOCATE_BUFFER 0x100u
#define FORMAT_MESSAGE_IGNORE_INSERTS 0x200u
#define FORMAT_MESSAGE_FROM_SYSTEM 0x1000u
#define LANG_NEUTRAL 0
#define SUBLANG_DEFAULT 1
#define MAKELANGID(language, sublanguage) ((sublanguage) << 10 | (language))
DWORD FormatMessageA(DWORD flags, const void* source, DWORD code, DWORD language, char* text,
                     DWORD size, void* arguments);
HANDLE LocalFree(HANDLE memory);

// --- handles, events, waits ---

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    void* lpSecurityDescriptor;
    BOOL bInheritHandle;
};

#define SYNCHRONIZE 0x100000u
#define READ_CONTROL 0x20000u
#define EVENT_MODIFY_STATE 2u
#define PROCESS_TERMINATE 1u
#define PROCESS_QUERY_INFORMATION 0x400u
#define DUPLICATE_CLOSE_SOURCE 1u
#define DUPLICATE_SAME_ACCESS 2u
#define HANDLE_FLAG_INHERIT 1u
#define HANDLE_FLAG_PROTECT_FROM_CLOSE 2u
#define WAIT_OBJECT_0 0u
#define WAIT_ABANDONED_0 0x80u
#define WAIT_TIMEOUT 258u
#define WAIT_FAILED 0xFFFFFFFFu

BOOL CloseHandle(HANDLE handle);
BOOL DuplicateHandle(HANDLE sourceProcess, HANDLE source, HANDLE targetProcess, HANDLE* target,
                     DWORD access, BOOL inherit, DWORD options);
BOOL GetHandleInformation(HANDLE handle, DWORD* flags);
BOOL SetHandleInformation(HANDLE handle, DWORD mask, DWORD flags);
HANDLE CreateEventA(SECURITY_ATTRIBUTES* attributes, BOOL manualReset, BOOL signalled,
                    const char* name);
HANDLE OpenEventA(DWORD access, BOOL inherit, const char* name);
BOOL SetEvent(HANDLE event);
BOOL ResetEvent(HANDLE event);
DWORD WaitForSingleObject(HANDLE object, DWORD timeoutMs);
DWORD WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL waitAll, DWORD timeoutMs);

// Only declared: no source that is compiled here gets to them.
HANDLE CreateSemaphoreA(SECURITY_ATTRIBUTES* attributes, LONG initial, LONG most, const char* name);
HANDLE OpenSemaphoreA(DWORD access, BOOL inherit, const char* name);
BOOL ReleaseSemaphore(HANDLE semaphore, LONG count, LONG* former);
HANDLE CreateMutexA(SECURITY_ATTRIBUTES* attributes, BOOL owned, const char* name);
HANDLE OpenMutexA(DWORD access, BOOL inherit, const char* name);
BOOL ReleaseMutex(HANDLE mutex);

// --- locks ---

struct CRITICAL_SECTION {
    pthread_mutex_t mutex;
    HANDLE OwningThread;
    LONG RecursionCount;
};

struct CONDITION_VARIABLE {
    pthread_cond_t condition;
};

struct SRWLOCK {
    pthread_rwlock_t lock;
};

BOOL InitializeCriticalSectionAndSpinCount(CRITICAL_SECTION* section, DWORD spinCount);
void DeleteCriticalSection(CRITICAL_SECTION* section);
void EnterCriticalSection(CRITICAL_SECTION* section);
void LeaveCriticalSection(CRITICAL_SECTION* section);

void InitializeConditionVariable(CONDITION_VARIABLE* variable);
void WakeConditionVariable(CONDITION_VARIABLE* variable);
void WakeAllConditionVariable(CONDITION_VARIABLE* variable);
BOOL SleepConditionVariableCS(CONDITION_VARIABLE* variable, CRITICAL_SECTION* section,
                              DWORD timeoutMs);

void InitializeSRWLock(SRWLOCK* lock);
void AcquireSRWLockExclusive(SRWLOCK* lock);
void ReleaseSRWLockExclusive(SRWLOCK* lock);
void AcquireSRWLockShared(SRWLOCK* lock);
void ReleaseSRWLockShared(SRWLOCK* lock);

// --- threads and processes ---

struct STARTUPINFOA {
    DWORD cb;
    DWORD dwFlags;
    HANDLE hStdInput;
    HANDLE hStdOutput;
    HANDLE hStdError;
};

struct PROCESS_INFORMATION {
    HANDLE hProcess;
    HANDLE hThread;
    DWORD dwProcessId;
    DWORD dwThreadId;
};

#define STARTF_USESTDHANDLES 0x100u
#define CREATE_SUSPENDED 4u
#define CREATE_NEW_PROCESS_GROUP 0x200u
#define CREATE_BREAKAWAY_FROM_JOB 0x1000000u
#define STILL_ACTIVE 259u
#define CTRL_C_EVENT 0u

DWORD GetCurrentThreadId();
DWORD GetThreadId(HANDLE thread);
DWORD GetCurrentProcessId();
HANDLE GetCurrentProcess();
void Sleep(DWORD milliseconds);
// A hint to the processor there.
void YieldProcessor();
BOOL CreateProcessA(const char* program, char* commandLine, SECURITY_ATTRIBUTES* ofProcess,
                    SECURITY_ATTRIBUTES* ofThread, BOOL inherit, DWORD flags, void* environment,
                    const char* directory, STARTUPINFOA* startup, PROCESS_INFORMATION* created);
DWORD ResumeThread(HANDLE thread);
HANDLE OpenProcess(DWORD access, BOOL inherit, DWORD processId);
BOOL TerminateProcess(HANDLE process, UINT code);
BOOL GetExitCodeProcess(HANDLE process, DWORD* code);
BOOL SetProcessAffinityMask(HANDLE process, DWORD_PTR mask);
BOOL GenerateConsoleCtrlEvent(DWORD event, DWORD group);
[[noreturn]] void ExitProcess(UINT code);

// --- clocks ---

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

union LARGE_INTEGER {
    LONGLONG QuadPart;
};

union ULARGE_INTEGER {
    struct {
        DWORD LowPart;
        DWORD HighPart;
    };
    ULONGLONG QuadPart;
};

BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency);
BOOL QueryPerformanceCounter(LARGE_INTEGER* ticks);
DWORD GetTickCount();
ULONGLONG GetTickCount64();
void GetSystemTimeAsFileTime(FILETIME* now);

// --- libraries, exceptions, memory, the console, the debugger, the version ---

HMODULE LoadLibraryExA(const char* name, HANDLE file, DWORD flags);
HMODULE GetModuleHandleA(const char* name);
FARPROC GetProcAddress(HMODULE library, const char* symbol);
BOOL FreeLibrary(HMODULE library);
DWORD GetModuleFileNameA(HMODULE library, char* path, DWORD size);

struct EXCEPTION_RECORD {
    DWORD ExceptionCode;
};
struct EXCEPTION_POINTERS {
    EXCEPTION_RECORD* ExceptionRecord;
};
using VectoredHandler = LONG (*)(EXCEPTION_POINTERS*);
#define EXCEPTION_CONTINUE_EXECUTION (-1)
#define EXCEPTION_CONTINUE_SEARCH 0
void* AddVectoredExceptionHandler(DWORD first, VectoredHandler handler);
DWORD RemoveVectoredExceptionHandler(void* handler);
void RaiseException(DWORD code, DWORD flags, DWORD count, const ULONG_PTR* arguments);

#define MEM_RESERVE 0x2000u
#define PAGE_NOACCESS 1u
// Gives nothing: the test that fills the address space isn't run here.
void* VirtualAlloc(void* address, SIZE_T size, DWORD type, DWORD protection);
// There are none: the runtime's blocks can't be counted.
#define PROCESS_HEAP_ENTRY_BUSY 4
struct PROCESS_HEAP_ENTRY {
    DWORD cbData;
    WORD wFlags;
};
DWORD GetProcessHeaps(DWORD most, HANDLE* heaps);
BOOL HeapLock(HANDLE heap);
BOOL HeapUnlock(HANDLE heap);
BOOL HeapWalk(HANDLE heap, PROCESS_HEAP_ENTRY* entry);

struct COORD {
    SHORT X;
    SHORT Y;
};
struct SMALL_RECT {
    SHORT Left;
    SHORT Top;
    SHORT Right;
    SHORT Bottom;
};
struct CONSOLE_SCREEN_BUFFER_INFO {
    COORD dwSize;
    COORD dwCursorPosition;
    WORD wAttributes;
    SMALL_RECT srWindow;
    COORD dwMaximumWindowSize;
};
#define STD_INPUT_HANDLE (static_cast<DWORD>(-10))
#define STD_OUTPUT_HANDLE (static_cast<DWORD>(-11))
#define STD_ERROR_HANDLE (static_cast<DWORD>(-12))
#define FILE_TYPE_UNKNOWN 0u
#define FILE_TYPE_CHAR 2u
HANDLE GetStdHandle(DWORD stream);
DWORD GetFileType(HANDLE file);
BOOL GetConsoleScreenBufferInfo(HANDLE console, CONSOLE_SCREEN_BUFFER_INFO* info);
BOOL SetConsoleTextAttribute(HANDLE console, WORD attribute);
using ConsoleHandler = BOOL (*)(DWORD);
BOOL SetConsoleCtrlHandler(ConsoleHandler handler, BOOL add);
void OutputDebugStringA(const char* text);

struct OSVERSIONINFOA {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    char szCSDVersion[128];
};
#define VER_PLATFORM_WIN32_NT 2u
BOOL GetVersionExA(OSVERSIONINFOA* version);
