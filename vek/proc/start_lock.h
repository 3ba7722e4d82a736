// The lock under which children are started, one at a time.
#pragma once

#include "vek/thread/mutex.h"

namespace vek::proc {

// Hold it from the creation of an inheritable handle until its child has been created and the
// handle is closed in this process: a child inherits every handle that is inheritable when it
// starts. One lock for the whole process, recursive.
thread::Mutex& startLock();

}  // namespace vek::proc
