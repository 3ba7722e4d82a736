// vek::proc::InheritedStream: an inheritable handle of a standard stream for a child.
#pragma once

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/proc/start_lock.h"

namespace vek::proc {

// Construct and destroy it with startLock held, around the child's creation.
class InheritedStream : public NoCopy {
  public:
    // Uses `chosen` or, if that is INVALID_HANDLE_VALUE, this process's own stream `standard`
    // (STD_INPUT_HANDLE, ...). A handle that isn't inheritable, such as the null device, is
    // duplicated; the original doesn't change. If duplication fails the original is used. Calls
    // GetStdHandle and DuplicateHandle. Doesn't throw.
    InheritedStream(HANDLE chosen, DWORD standard) VEK_REQUIRES(startLock());

    // Closes the duplicate, if any.
    ~InheritedStream();

    HANDLE get() const { return copy != nullptr ? copy : original; }

  private:
    const HANDLE original;
    HANDLE copy = nullptr;
};

}  // namespace vek::proc
