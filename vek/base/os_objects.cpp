#include "vek/base/os_objects.h"

#include <array>

#include "vek/base/os_bounded_text.h"

namespace vek::os {

namespace {

// Room for "Global\" and a name below maxGlobalName.
using ObjectNameBuffer = std::array<char, 128>;

// EVENT_ALL_ACCESS of the systems that this layer was made for, which the headers of later ones
// keep.
constexpr DWORD eventAllAccess = 0x1F0003;

bool hasGlobalNamespace() {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    return GetVersionExA(&version) != 0 && version.dwPlatformId == VER_PLATFORM_WIN32_NT &&
           version.dwMajorVersion >= 5;
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

int openEvent(HANDLE* event, const char* name) {
    if (event == nullptr) {
        return 0;
    }
    ObjectNameBuffer buffer;
    *event =
        OpenEventA(eventAllAccess, FALSE, globalObjectName(name, buffer.data(), buffer.size()));
    return *event != nullptr ? 1 : 0;
}

int setEvent(HANDLE event) {
    return SetEvent(event) != 0 ? 1 : 0;
}

int waitObject(HANDLE object, std::uint32_t timeoutMs, std::uint32_t* result) {
    const DWORD waited = WaitForSingleObject(object, timeoutMs);
    if (result != nullptr) {
        *result = waited == WAIT_FAILED ? GetLastError() : waited;
    }
    return waited == WAIT_FAILED ? 0 : 1;
}

int closeObject(HANDLE object) {
    return CloseHandle(object) != 0 ? 1 : 0;
}

}  // namespace vek::os
