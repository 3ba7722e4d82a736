#include "vek/fs/security_attributes.h"

#include <memory>
#include <ostream>
#include <string>

#include "vek/exception.h"

// Behind windows.h, which it needs.
#include <sddl.h>

namespace vek::fs {

namespace {

struct LocalMemory {
    void operator()(char* memory) const { LocalFree(memory); }
};

std::string descriptorText(PSECURITY_DESCRIPTOR descriptor) {
    if (descriptor == nullptr) {
        return "<null>";
    }
    char* text = nullptr;
    if (ConvertSecurityDescriptorToStringSecurityDescriptorA(
            descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr) == 0) {
        throw OsError(GetLastError());
    }
    return std::unique_ptr<char, LocalMemory>(text).get();
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const SecurityAttributes& attributes) {
    const SECURITY_ATTRIBUTES* record = attributes.record;
    if (record == nullptr) {
        return out << "attributes not set";
    }
    return out << "len=" + std::to_string(record->nLength) + " sddl=\"" +
                      descriptorText(record->lpSecurityDescriptor) +
                      "\" inherit=" + std::to_string(record->bInheritHandle);
}

}  // namespace vek::fs
