#include "vek/os/objects.h"

#include <array>

#include "vek/os/bounded_text.h"

namespace vek::os {

namespace {

// SEMAPHORE_ALL_ACCESS, EVENT_ALL_ACCESS and MUTEX_ALL_ACCESS of the systems that this layer was
// made for, which the headers of later ones keep.
constexpr DWORD semaphoreAllAccess = 0x1F0003;
constexpr DWORD eventAllAccess = 0x1F0003;
constexpr DWORD mutexAllAccess = 0x1F0001;

constexpr LONG semaphoreMaximum = 1;

// The name under which an object is created or opened, for the time of one call.
class GlobalName {
  public:
    explicit GlobalName(const char* plain)
        : name(globalObjectName(plain, buffer.data(), buffer.size())) {}
    GlobalName(const GlobalName&) = delete;
    GlobalName& operator=(const GlobalName&) = delete;
    const char* get() const { return name; }

  private:
    std::array<char, globalNameBuffer> buffer;
    const char* name;
};

bool hasGlobalNamespace() {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    return GetVersionExA(&version) != 0 && version.dwPlatformId == VER_PLATFORM_WIN32_NT &&
           version.dwMajorVersion >= 5;
}

int stored(HANDLE* output, HANDLE handle) {
    *output = handle;
    return handle != nullptr ? 1 : 0;
}

int waitOutcome(DWORD waited, std::uint32_t* result) {
    const bool done = waited < WAIT_FAILED;
    if (result != nullptr) {
        *result = done ? waited : GetLastError();
    }
    return done ? 1 : 0;
}

}  // namespace

const char* globalObjectName(const char* name, char* buffer, std::size_t size) {
    std::size_t length = 0;
    while (name != nullptr && length < maxGlobalName && name[length] != '\0') {
        ++length;
    }
    if (length == 0 || length == maxGlobalName) {
        return name;
    }
    if (hasGlobalNamespace()) {
        boundedPrint(buffer, size, "Global\\%s", name);
    } else {
        boundedCopy(buffer, size, name);
    }
    return buffer;
}

int createSemaphore(HANDLE* semaphore, const char* name, long initialCount, std::uint32_t flags) {
    if (semaphore == nullptr) {
        return 0;
    }
    const GlobalName global(name);
    return stored(semaphore, CreateSemaphoreA(securityAttributesFor(flags), initialCount,
                                              semaphoreMaximum, global.get()));
}

int openSemaphore(HANDLE* semaphore, const char* name) {
    if (semaphore == nullptr) {
        return 0;
    }
    return stored(semaphore, OpenSemaphoreA(semaphoreAllAccess, FALSE, GlobalName(name).get()));
}

int releaseSemaphore(HANDLE semaphore) {
    return ReleaseSemaphore(semaphore, 1, nullptr) != 0 ? 1 : 0;
}

int createEvent(HANDLE* event, const char* name, std::uint32_t flags) {
    if (event == nullptr) {
        return 0;
    }
    const GlobalName global(name);
    return stored(event, CreateEventA(securityAttributesFor(flags), FALSE, FALSE, global.get()));
}

int openEvent(HANDLE* event, const char* name) {
    if (event == nullptr) {
        return 0;
    }
    return stored(event, OpenEventA(eventAllAccess, FALSE, GlobalName(name).get()));
}

int setEvent(HANDLE event) {
    return SetEvent(event) != 0 ? 1 : 0;
}

int resetEvent(HANDLE event) {
    return ResetEvent(event) != 0 ? 1 : 0;
}

int createMutex(HANDLE* mutex, const char* name, std::uint32_t flags) {
    if (mutex == nullptr) {
        return 0;
    }
    const GlobalName global(name);
    return stored(mutex, CreateMutexA(securityAttributesFor(flags), FALSE, global.get()));
}

int openMutex(HANDLE* mutex, const char* name) {
    if (mutex == nullptr) {
        return 0;
    }
    return stored(mutex, OpenMutexA(mutexAllAccess, FALSE, GlobalName(name).get()));
}

int releaseMutex(HANDLE mutex) {
    return ReleaseMutex(mutex) != 0 ? 1 : 0;
}

int waitObject(HANDLE object, std::uint32_t timeoutMs, std::uint32_t* result) {
    return waitOutcome(WaitForSingleObject(object, timeoutMs), result);
}

int waitObjects(const HANDLE* objects, std::uint32_t count, int waitAll, std::uint32_t timeoutMs,
                std::uint32_t* result) {
    // With a count of 0 the system refuses the call without a look at the array.
    const DWORD given = objects != nullptr ? count : 0;
    return waitOutcome(
        WaitForMultipleObjects(given, objects, waitAll != 0 ? TRUE : FALSE, timeoutMs), result);
}

int closeObject(HANDLE object) {
    return CloseHandle(object) != 0 ? 1 : 0;
}

}  // namespace vek::os
