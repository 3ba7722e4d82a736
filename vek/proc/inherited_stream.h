// vek::proc::InheritedStream: a standard stream of this process in a form that a child can inherit.
#pragma once

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace vek::proc {

// To be made and destroyed with startLock held, around the child's creation.
class InheritedStream : public NoCopy {
  public:
    // `chosen`, or the process's own stream `standard` (STD_INPUT_HANDLE, ...) if that is
    // INVALID_HANDLE_VALUE. A handle that can't be inherited, such as the null device, is
    // duplicated; the original stays as it is. One that can't be duplicated is passed on as it
    // stands. Stands on GetStdHandle and DuplicateHandle. Throws nothing.
    InheritedStream(HANDLE chosen, DWORD standard);

    // Closes the duplicate, if there is one.
    ~InheritedStream();

    HANDLE get() const { return copy != nullptr ? copy : original; }

  private:
    const HANDLE original;
    HANDLE copy = nullptr;
};

}  // namespace vek::proc
