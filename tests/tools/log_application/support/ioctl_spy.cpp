#include "tests/tools/log_application/support/ioctl_spy.h"

#include <cstring>
#include <stdexcept>

namespace log_application_test {

namespace {

std::vector<IoctlSpy::Call> calls;

void* originalIoctl() {
    return reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ws2_32.dll"), "WSAIoctl"));
}

int WSAAPI recordingIoctl(SOCKET socket, DWORD code, LPVOID input, DWORD inputSize, LPVOID output,
                          DWORD outputSize, LPDWORD returned, LPWSAOVERLAPPED overlapped,
                          LPWSAOVERLAPPED_COMPLETION_ROUTINE routine) {
    calls.push_back({code, std::string(static_cast<const char*>(input), inputSize)});
    const auto original = reinterpret_cast<decltype(&recordingIoctl)>(originalIoctl());
    return original(socket, code, input, inputSize, output, outputSize, returned, overlapped,
                    routine);
}

// The entry of `function` in the import table of this program.
void** importEntry(const void* function) {
    auto* const base = reinterpret_cast<char*>(GetModuleHandleA(nullptr));
    const auto* const dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const DWORD imports =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* library = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + imports);
         library->FirstThunk != 0; ++library) {
        for (auto* entry = reinterpret_cast<void**>(base + library->FirstThunk); *entry != nullptr;
             ++entry) {
            if (*entry == function) {
                return entry;
            }
        }
    }
    throw std::runtime_error("the function isn't imported");
}

void replaceImport(const void* from, void* to) {
    void** const entry = importEntry(from);
    DWORD protection = 0;
    VirtualProtect(entry, sizeof *entry, PAGE_READWRITE, &protection);
    *entry = to;
    VirtualProtect(entry, sizeof *entry, protection, &protection);
}

}  // namespace

IoctlSpy::IoctlSpy() {
    calls.clear();
    replaceImport(originalIoctl(), reinterpret_cast<void*>(&recordingIoctl));
}

IoctlSpy::~IoctlSpy() {
    replaceImport(reinterpret_cast<void*>(&recordingIoctl), originalIoctl());
}

std::vector<IoctlSpy::Call> IoctlSpy::callsOf(DWORD code) const {
    std::vector<Call> found;
    for (const Call& call : calls) {
        if (call.code == code) {
            found.push_back(call);
        }
    }
    return found;
}

}  // namespace log_application_test
