// Who may open the named objects that processes of several users share.
#pragma once

#include <cstdint>

#include "vek/base/windows.h"

namespace vek::os {

// The one bit of a `flags` argument: the new object gets sharedSecurityAttributes instead of the
// default security.
inline constexpr std::uint32_t useSharedSecurity = 1;

// The security for objects that all processes of the product share: guests and anonymous users are
// denied everything, authenticated users and administrators may do everything. Handles made with it
// are not inherited.
//
// The result is the same record at each call, owned by this function; null if there was no memory
// for it. Each call makes the record's descriptor anew and leaks the former one, which another
// thread may just be using. If the system can't make one, the record is given back without it and
// stands for the default security. Throws nothing. Safe from any thread. Stands on
// ConvertStringSecurityDescriptorToSecurityDescriptorA.
SECURITY_ATTRIBUTES* sharedSecurityAttributes();

// The attributes that `flags` ask for: the shared ones or, as null, the default ones.
SECURITY_ATTRIBUTES* securityAttributesFor(std::uint32_t flags);

}  // namespace vek::os
