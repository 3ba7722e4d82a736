// Fails a test program of the checked build that ends with more open handles than it began with,
// and names them.
//
// Not counted are the event of a std::mutex, or of a mutex of the runtime, and the semaphores of a
// std::condition_variable, in static storage. The runtime makes them when a thread first has to
// wait, and closes them behind main, or never for an object that is not destroyed, such as
// log::Manager::instance(). Those of objects elsewhere are counted. Nor is what the system's
// libraries keep for themselves: see isSystemsOwn.
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "tests/support/open_handles.h"
#include "vek/base/windows.h"

namespace {

// By name: not every test program is linked with the sockets.
template <class Function>
Function* functionOf(HMODULE library, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

// The system keeps an event for each thread that has received from a socket, until the thread ends.
void receiveFromASocket() {
    const HMODULE library = GetModuleHandleA("ws2_32.dll");
    if (library == nullptr) {
        return;
    }
    WSADATA data;
    if (functionOf<decltype(::WSAStartup)>(library, "WSAStartup")(MAKEWORD(2, 2), &data) != 0) {
        return;
    }
    const SOCKET socket = functionOf<decltype(::socket)>(library, "socket")(AF_INET, SOCK_DGRAM, 0);
    u_long yes = 1;
    functionOf<decltype(::ioctlsocket)>(library, "ioctlsocket")(socket, static_cast<long>(FIONBIO),
                                                                &yes);
    char byte;
    functionOf<decltype(::recv)>(library, "recv")(socket, &byte, 1, 0);
    functionOf<decltype(::closesocket)>(library, "closesocket")(socket);
    functionOf<decltype(::WSACleanup)>(library, "WSACleanup")();
}

// What Wine's and Windows' own libraries open at their first use and keep.
void openWhatStays() {
    receiveFromASocket();
    char text[64];
    FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                   ERROR_FILE_NOT_FOUND, 0, text, sizeof text, nullptr);
    HKEY key = nullptr;
    for (HKEY const root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER, HKEY_CLASSES_ROOT, HKEY_USERS}) {
        if (RegOpenKeyExA(root, nullptr, 0, KEY_READ, &key) == ERROR_SUCCESS) {
            RegCloseKey(key);
        }
    }
    CloseHandle(CreateEventA(nullptr, TRUE, FALSE, "vek-tests-first-named-object"));
    std::thread([] {}).join();
    // The runtime opens objects of its own at its first exception, lock and wait.
    try {
        throw 1;
    } catch (int) {
    }
    std::mutex mutex;
    std::condition_variable condition;
    std::unique_lock<std::mutex> held(mutex);
    condition.notify_one();
    condition.wait_for(held, std::chrono::milliseconds(1));
    // GoogleTest watches each thread that may fail an assertion, by a handle until its end.
    EXPECT_NO_FATAL_FAILURE({});
    // A thread that debugs another process keeps the object that it does so by.
    using DbgUiConnectToDbg = LONG(WINAPI*)();
    const auto connect = reinterpret_cast<DbgUiConnectToDbg>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleA("ntdll.dll"), "DbgUiConnectToDbg")));
    if (connect != nullptr) {
        connect();
    }
}

bool isOpen(std::uintptr_t value) {
    DWORD flags = 0;
    return GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0;
}

// The type of the object and its name, as far as the system gives them.
std::string describe(std::uintptr_t value) {
    using NtQueryObject = LONG(WINAPI*)(HANDLE, int, void*, ULONG, ULONG*);
    const auto query = reinterpret_cast<NtQueryObject>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQueryObject")));
    std::string description = std::to_string(value);
    for (const int kind : {2, 1}) {
        struct {
            USHORT length;
            USHORT capacity;
            const wchar_t* text;
            wchar_t room[1024];
        } answer = {};
        if (query != nullptr &&
            query(reinterpret_cast<HANDLE>(value), kind, &answer, sizeof answer, nullptr) == 0) {
            description += ' ';
            for (USHORT i = 0; i < answer.length / sizeof(wchar_t); ++i) {
                description += static_cast<char>(answer.text[i]);
            }
        }
    }
    return description;
}

// What a pthread_mutex_t points to in the runtime (winpthreads), while nobody holds the mutex.
struct FreeMutex {
    int state;  // 0: free
    int type;   // 0 to 2
    HANDLE event;
    unsigned repeats;
    DWORD owner;
};

bool isReadable(const void* memory, std::size_t size) {
    MEMORY_BASIC_INFORMATION area;
    return VirtualQuery(memory, &area, sizeof area) != 0 && area.State == MEM_COMMIT &&
           (area.Protect & (PAGE_READWRITE | PAGE_EXECUTE_READWRITE)) != 0 &&
           static_cast<const char*>(memory) + size <=
               static_cast<const char*>(area.BaseAddress) + area.RegionSize;
}

bool isMutexWithEvent(const FreeMutex* mutex) {
    return reinterpret_cast<std::uintptr_t>(mutex) % alignof(FreeMutex) == 0 &&
           isReadable(mutex, sizeof *mutex) && mutex->state == 0 && mutex->type >= 0 &&
           mutex->type <= 2 && mutex->event != nullptr && mutex->repeats == 0 &&
           mutex->owner == static_cast<DWORD>(-1);
}

// What a pthread_cond_t points to in the runtime.
struct Condition {
    unsigned valid;  // `validCondition`
    int busy;
    LONG waiters[3];
    CRITICAL_SECTION locks[2];
    LONG queued;
    CRITICAL_SECTION blockLock;
    LONG blocked;
    HANDLE semaphores[2];
};
constexpr unsigned validCondition = 0xC0BAB1FD;

bool isCondition(const Condition* condition) {
    return reinterpret_cast<std::uintptr_t>(condition) % alignof(Condition) == 0 &&
           isReadable(condition, sizeof *condition) && condition->valid == validCondition;
}

// The events of the mutexes in the program's variables, and the semaphores of the conditions.
std::set<std::uintptr_t> handlesOfStaticLocks() {
    std::set<std::uintptr_t> handles;
    const auto* const image = reinterpret_cast<const char*>(GetModuleHandleA(nullptr));
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(image);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(image + dos->e_lfanew);
    const auto* section = reinterpret_cast<const IMAGE_SECTION_HEADER*>(
        reinterpret_cast<const char*>(&headers->OptionalHeader) +
        headers->FileHeader.SizeOfOptionalHeader);
    for (int i = 0; i < headers->FileHeader.NumberOfSections; ++i, ++section) {
        if ((section->Characteristics & IMAGE_SCN_MEM_WRITE) == 0) {
            continue;
        }
        const auto* const words =
            reinterpret_cast<const void* const*>(image + section->VirtualAddress);
        for (std::size_t word = 0; word < section->Misc.VirtualSize / sizeof *words; ++word) {
            const auto* const mutex = static_cast<const FreeMutex*>(words[word]);
            if (isMutexWithEvent(mutex)) {
                handles.insert(reinterpret_cast<std::uintptr_t>(mutex->event));
            }
            const auto* const condition = static_cast<const Condition*>(words[word]);
            if (isCondition(condition)) {
                for (const HANDLE semaphore : condition->semaphores) {
                    handles.insert(reinterpret_cast<std::uintptr_t>(semaphore));
                }
            }
        }
    }
    return handles;
}

// Whether the described object is one that a library of the system opens when it is first needed,
// and keeps: user32 and the fonts, which come with shell32, sound, ini files, the text for a
// debugger, and under Wine the programs of the host that it has started.
bool isSystemsOwn(const std::string& description) {
    constexpr const char* names[] = {"\\WindowStations\\WinSta0",
                                     "Desktop \\Default",
                                     "\\__WINE_FONT_MUTEX__",
                                     "\\DBWinMutex",
                                     "\\Software\\Wine\\",
                                     "\\Control Panel\\Desktop",
                                     "\\Hardware Profiles\\Current",
                                     "\\AudioCompressionManager\\",
                                     "\\Z:\\usr\\bin\\",
                                     "\\Windows NT\\CurrentVersion\\IniFileMapping",
                                     "\\REGISTRY\\User\\S-1-5-21-0-0-0-1000"};
    return std::ranges::any_of(names, [&](const std::string& name) {
        // The last is that key alone, and none below it.
        return name.ends_with("1000") ? description.ends_with(name)
                                      : description.find(name) != std::string::npos;
    });
}

class HandlesAtEnd : public testing::Environment {
  public:
    void SetUp() override {
        openWhatStays();
        before_ = support::openHandles();
    }

    void TearDown() override {
        using Clock = std::chrono::steady_clock;
        // Once: on a busy machine it takes seconds.
        std::set<std::uintptr_t> more = support::openHandles();
        // Threads that have been waited for may still be about to close what they had.
        const auto limit = Clock::now() + std::chrono::seconds(10);
        do {
            std::erase_if(more, [](std::uintptr_t value) { return !isOpen(value); });
            if (more.size() > before_.size()) {
                for (const std::uintptr_t handle : handlesOfStaticLocks()) {
                    more.erase(before_.contains(handle) ? 0 : handle);
                }
                std::erase_if(more, [&](std::uintptr_t value) {
                    return !before_.contains(value) && isSystemsOwn(describe(value));
                });
            }
            if (more.size() <= before_.size()) {
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        } while (Clock::now() < limit);
        for (const std::uintptr_t value : before_) {
            more.erase(value);
        }
        std::string all;
        for (const std::uintptr_t value : more) {
            all += "\n  " + describe(value);
        }
        ADD_FAILURE() << "the program has more handles than at its start:" << all;
    }

  private:
    std::set<std::uintptr_t> before_;
};

[[maybe_unused]] testing::Environment* const handlesAtEnd =
    testing::AddGlobalTestEnvironment(new HandlesAtEnd);

}  // namespace
