// Flat functions that start threads of the C runtime and stop them by a flag.
//
// They throw nothing. They return 1 for success and 0 for failure. Thread-safe.
//
// A flag is 0 while its thread doesn't run and 1 from its start on. waitThreadFlag sets it to 3
// (threadStopping), which asks the thread to end; the thread signals its end by another value,
// usually 0, so that it can be started again.
#pragma once

#include <atomic>
#include <cstdint>

namespace vek::os {

using ThreadFunction = void (*)(void* argument);  // what a thread runs
using ThreadFlag = std::atomic<int>;              // has one of the three values below

inline constexpr int threadIdle = 0;      // no thread was started
inline constexpr int threadStarted = 1;   // it runs
inline constexpr int threadStopping = 3;  // it is asked to end

// Runs `function` with `argument` on a new thread whose stack has `stackSize` bytes, or the
// program's default for 0. No exception may leave the function. `id`, which may be null, receives
// the runtime's handle of the thread. The runtime closes it when the thread ends: don't use it
// after that. A null function gives 0. Calls _beginthread.
int startThread(std::uintptr_t* id, ThreadFunction function, std::uint32_t stackSize,
                void* argument);

// The same with the default stack, but only if `*once` is 0: sets it to 1 first, and back to 0 if
// the thread can't be started. A flag that isn't 0 means that the thread has been started: returns
// 1 and does nothing. A null flag gives 0.
int startThreadOnce(std::uintptr_t* id, ThreadFlag* once, ThreadFunction function, void* argument);

// Ends the calling thread, which startThread has started, without running destructors on its stack.
// Calls _endthread.
[[noreturn]] void endThread();

// Stops the thread of `flag`: sets the flag to 3 unless it is 0, calls `stop` with `argument`, and
// blocks until the thread changes the flag. It polls each 100 ms for up to `rounds` rounds (0 means
// 0xFFFFFFFF), and returns 0 if the flag is still 3 then. If the flag is 0, returns 1 and doesn't
// call `stop`. `id` is ignored. `stop` may be null; a null flag gives 0.
int waitThreadFlag(std::uintptr_t id, ThreadFlag* flag, std::uint32_t rounds, ThreadFunction stop,
                   void* argument);

}  // namespace vek::os
