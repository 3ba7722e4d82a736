#include "vek/os/security.h"

#include <new>

#include <sddl.h>

namespace vek::os {

namespace {

// Denied are guests (BG) and anonymous (AN), allowed are authenticated users (AU) and
// administrators (BA); each with generic all, inherited by objects and containers.
constexpr char sharedDescriptor[] =
    "D:(D;OICI;GA;;;BG)(D;OICI;GA;;;AN)(A;OICI;GA;;;AU)(A;OICI;GA;;;BA)";

SECURITY_ATTRIBUTES* newAttributes() {
    auto* attributes = new (std::nothrow) SECURITY_ATTRIBUTES();
    if (attributes != nullptr) {
        attributes->nLength = sizeof *attributes;
        attributes->bInheritHandle = FALSE;
    }
    return attributes;
}

}  // namespace

SECURITY_ATTRIBUTES* sharedSecurityAttributes() {
    // Lives as long as the process.
    static SECURITY_ATTRIBUTES* const attributes = newAttributes();
    if (attributes != nullptr) {
        // Deliberately run at each call, its outcome untested. The descriptor of the call before is
        // leaked, so that it stays valid for threads that are using it.
        ConvertStringSecurityDescriptorToSecurityDescriptorA(
            sharedDescriptor, SDDL_REVISION_1, &attributes->lpSecurityDescriptor, nullptr);
    }
    return attributes;
}

SECURITY_ATTRIBUTES* securityAttributesFor(std::uint32_t flags) {
    return (flags & useSharedSecurity) != 0 ? sharedSecurityAttributes() : nullptr;
}

}  // namespace vek::os
