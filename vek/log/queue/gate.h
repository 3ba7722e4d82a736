// vek::log::Gate: lets one thread at a time into a logger's statement.
//
// The logger's mutex alone would do, but slowly: where the system hands a critical section to the
// thread that has waited longest, as Wine does, threads that log without a pause put each other to
// sleep at each statement. Here a running thread may go ahead of one that still wakes up.
#pragma once

#include <atomic>
#include <cstddef>

#include "vek/base/no_copy.h"
#include "vek/log/queue/queue_lock.h"

namespace vek::log {

// Thread-safe. No order among waiting threads is promised.
class Gate : public NoCopy {
  public:
    // Blocks, without a time-out, while another thread is inside. For a thread that isn't inside.
    // Throws std::system_error if a wait fails; the thread isn't inside then.
    void enter() {
        if (inside.exchange(1) != 0) {
            waitForTurn();
        }
    }

    // For the thread that is inside. Throws nothing.
    void leave() {
        inside.store(0);
        if (waiting.load() != 0) {
            wakeNext();
        }
    }

  private:
    class Waiting;

    void waitForTurn();
    void wakeNext();

    // How many threads are inside, and how many are in `waitForTurn`. A leaving thread writes the
    // first and then reads the second, a waiting thread the other way round: one of them sees the
    // other.
    std::atomic<std::size_t> inside = 0;
    std::atomic<std::size_t> waiting = 0;
    QueueLock lock;
};

}  // namespace vek::log
