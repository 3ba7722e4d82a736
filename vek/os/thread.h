// Flat functions that start threads of the C runtime and stop them by a flag.
//
// They throw nothing. The result is 1 for success and 0 for failure. Safe from any thread.
//
// A flag is 0 while its thread doesn't run and 1 from its start on. waitThreadFlag makes it 3
// (threadStopping), which asks the thread to end; the thread shows its end by another value, as a
// rule 0, so that it may be started again.
#pragma once

#include <atomic>
#include <cstdint>

namespace vek::os {

using ThreadFunction = void (*)(void* argument);
using ThreadFlag = std::atomic<int>;

inline constexpr int threadIdle = 0;
inline constexpr int threadStarted = 1;
inline constexpr int threadStopping = 3;

// Runs `function` with `argument` on a new thread whose stack has `stackSize` bytes, or the
// program's default for 0. No exception may leave the function. `id`, which may be null, gets what
// the runtime calls the thread by, a handle that the runtime closes itself when the thread ends: it
// is good for nothing that may come later than that. Stands on _beginthread. A null function gives
// 0.
int startThread(std::uintptr_t* id, ThreadFunction function, std::uint32_t stackSize,
                void* argument);

// The same with the default stack, but only if `*once` is 0: it is 1 then, and 0 again if there was
// no starting the thread. A flag that isn't 0 means that the thread has been started: the result is
// 1, and nothing is done. A null flag gives 0.
int startThreadOnce(std::uintptr_t* id, ThreadFlag* once, ThreadFunction function, void* argument);

// Ends the calling thread, one of startThread, without running destructors on its stack. Stands on
// _endthread.
[[noreturn]] void endThread();

// Stops the thread of `flag`: makes it 3 unless it is 0, calls `stop` with `argument`, and waits
// until the thread makes it something else, looking at it each 100 ms for up to `rounds` rounds (0
// means 0xFFFFFFFF). The result is 0 only if it is still 3 then. With the flag 0, `stop` isn't
// called and the result is 1. `id` has no meaning to this function. `stop` may be null; a null flag
// gives 0.
int waitThreadFlag(std::uintptr_t id, ThreadFlag* flag, std::uint32_t rounds, ThreadFunction stop,
                   void* argument);

}  // namespace vek::os
