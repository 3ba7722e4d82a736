// The lock that keeps the starts of two children apart.
#pragma once

#include "vek/thread/mutex.h"

namespace vek::proc {

// Held from the making of an inheritable handle until the child that it is meant for has been
// created and the handle is closed here: a child inherits every inheritable handle that there is at
// its start. One for the whole process. It nests.
thread::Mutex& startLock();

}  // namespace vek::proc
