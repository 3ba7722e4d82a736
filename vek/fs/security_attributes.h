// vek::fs::SecurityAttributes: the attributes of a new file as text, for messages.
#pragma once

#include <iosfwd>

#include "vek/base/windows.h"

namespace vek::fs {

struct SecurityAttributes {
    // Not owned; null if there are none.
    SECURITY_ATTRIBUTES* record = nullptr;
};

// Writes "attributes not set" if there is no record. Otherwise writes its length, the access list
// of its descriptor in double quotes (in the system's descriptor language, or "<null>" without a
// descriptor) and its inherit flag:
//
//     len=12 sddl="D:(A;;GA;;;AU)" inherit=0
//
// The numbers are decimal, whatever the stream is set to. Calls
// ConvertSecurityDescriptorToStringSecurityDescriptorA. Throws OsError for a descriptor that the
// system refuses; nothing is written then.
std::ostream& operator<<(std::ostream& out, const SecurityAttributes& attributes);

}  // namespace vek::fs
