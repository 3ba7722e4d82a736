// Fails a test program of the checked build that ends with more open handles than it began with,
// and names them.
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
