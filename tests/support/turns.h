// support::letTurnPass: waits in a way that takes as much longer as the machine is busier.
#pragma once

#include <thread>

#include "vek/base/windows.h"

namespace support {

// Waits for 10 milliseconds, and until a new thread has come and gone. Where many want the
// processor, another thread that can run has run by then, too, or does after some such turns.
inline void letTurnPass() {
    Sleep(10);
    std::thread([] {}).join();
}

}  // namespace support
