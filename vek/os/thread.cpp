#include "vek/os/thread.h"

#include <process.h>

#include "vek/base/windows.h"

namespace vek::os {

namespace {

constexpr DWORD pollMs = 100;
constexpr std::uint32_t allRounds = 0xFFFFFFFF;

}  // namespace

int startThread(std::uintptr_t* id, ThreadFunction function, std::uint32_t stackSize,
                void* argument) {
    if (function == nullptr) {
        return 0;
    }
    constexpr auto failed = static_cast<std::uintptr_t>(-1);
    const std::uintptr_t thread = _beginthread(function, stackSize, argument);
    if (id != nullptr) {
        *id = thread;
    }
    return thread != failed ? 1 : 0;
}

int startThreadOnce(std::uintptr_t* id, ThreadFlag* once, ThreadFunction function, void* argument) {
    if (once == nullptr) {
        return 0;
    }
    int expected = threadIdle;
    if (!once->compare_exchange_strong(expected, threadStarted)) {
        return 1;
    }
    if (startThread(id, function, 0, argument) == 0) {
        *once = threadIdle;
        return 0;
    }
    return 1;
}

void endThread() {
    _endthread();
}

int waitThreadFlag(std::uintptr_t /*id*/, ThreadFlag* flag, std::uint32_t rounds,
                   ThreadFunction stop, void* argument) {
    if (flag == nullptr) {
        return 0;
    }
    // The thread may end, and set the flag, at any moment.
    int value = *flag;
    do {
        if (value == threadIdle) {
            return 1;
        }
    } while (!flag->compare_exchange_weak(value, threadStopping));
    if (stop != nullptr) {
        stop(argument);
    }
    std::uint32_t roundsLeft = rounds != 0 ? rounds : allRounds;
    while (*flag == threadStopping) {
        if (roundsLeft == 0) {
            return 0;
        }
        --roundsLeft;
        Sleep(pollMs);
    }
    return 1;
}

}  // namespace vek::os
