// The security of named objects that processes of several users share.
#pragma once

#include <cstdint>

#include "vek/base/windows.h"

namespace vek::os {

// The one bit of a `flags` argument: the new object gets sharedSecurityAttributes instead of the
// default security.
inline constexpr std::uint32_t useSharedSecurity = 1;

// Returns the security for objects that all processes of the product share: guests and anonymous
// users are denied everything, authenticated users and administrators are allowed everything.
// Handles made with it are not inherited.
//
// The result is the same record at each call, owned by this function; null if the allocation
// failed. Each call makes the record's descriptor anew and leaks the previous one, which another
// thread may be using. If the system can't make a descriptor, the record has none, which means the
// default security. Throws nothing. Thread-safe. Calls
// ConvertStringSecurityDescriptorToSecurityDescriptorA.
SECURITY_ATTRIBUTES* sharedSecurityAttributes();

// Returns the shared attributes if `flags` has bit 0, else null, which means the default security.
SECURITY_ATTRIBUTES* securityAttributesFor(std::uint32_t flags);

}  // namespace vek::os
