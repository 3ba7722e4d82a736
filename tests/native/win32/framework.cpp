// What the concurrency code calls of the framework's parts that need Windows itself.
#include <cstdlib>

#include "tests/support/files.h"
#include "vek/base/environment.h"
#include "vek/base/terminate_handler.h"
#include "vek/base/windows.h"
#include "vek/fs/null_device.h"
#include "vek/fs/program_path.h"
#include "vek/net/winsock.h"
#include "vek/os/security.h"

namespace vek {

std::string programDirectory() {
    return "C:\\tests";
}

bool hasEnv(const std::string& name) {
    return std::getenv(name.c_str()) != nullptr;
}

// The runtime's own one shows what the sanitizer needs.
void installTerminateHandler() {}
void installTerminateHandlerOnNewThread() {}

namespace os {

SECURITY_ATTRIBUTES* securityAttributesFor(std::uint32_t /*flags*/) {
    return nullptr;
}

}  // namespace os

// There is no null device and no Winsock.
namespace fs {

void openNullDevice() {}
void closeNullDevice() {}
File* nullInput() {
    return nullptr;
}
File* nullOutput() {
    return nullptr;
}

}  // namespace fs

namespace net {

void startWinsock() {}
void stopWinsock() {}

}  // namespace net

}  // namespace vek

namespace support {

bool waitUntil(const std::function<bool()>& condition, unsigned limitMs) {
    const ULONGLONG end = GetTickCount64() + limitMs;
    while (!condition()) {
        if (GetTickCount64() >= end) {
            return false;
        }
        Sleep(1);
    }
    return true;
}

}  // namespace support
