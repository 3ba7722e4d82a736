// Fails a test program of the checked build that ends with more open handles than it began with,
// and names them.
//
// One kind is not counted: the event of a std::mutex, or of a mutex of the runtime, in static
// storage. The runtime makes it when a thread first has to wait for the mutex, and never closes it.
// The event of a mutex elsewhere is counted.
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

// What Wine's and Windows' own libraries open at their first use and keep.
void openWhatStays() {
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

// The events of the mutexes in the program's variables.
std::set<std::uintptr_t> eventsOfStaticMutexes() {
    std::set<std::uintptr_t> events;
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
            reinterpret_cast<const FreeMutex* const*>(image + section->VirtualAddress);
        for (std::size_t word = 0; word < section->Misc.VirtualSize / sizeof *words; ++word) {
            if (isMutexWithEvent(words[word])) {
                events.insert(reinterpret_cast<std::uintptr_t>(words[word]->event));
            }
        }
    }
    return events;
}

class HandlesAtEnd : public testing::Environment {
  public:
    void SetUp() override {
        openWhatStays();
        before_ = support::openHandles();
    }

    void TearDown() override {
        using Clock = std::chrono::steady_clock;
        std::set<std::uintptr_t> more;
        // Threads that have been waited for may still be about to close what they had.
        const auto limit = Clock::now() + std::chrono::seconds(3);
        do {
            more = support::openHandles();
            if (more.size() > before_.size()) {
                for (const std::uintptr_t event : eventsOfStaticMutexes()) {
                    more.erase(before_.contains(event) ? 0 : event);
                }
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
