// vek::log::QueueLock: the mutex of a BoundedQueue, and the two conditions that its users wait for.
//
// It stands on vek::thread::Mutex and Condition where the system has condition variables, which
// cost a tenth of the C++ runtime's. The emulated conditions of vek::thread would throw at each
// wake-up, so on a system without condition variables the C++ runtime's own take their place.
#pragma once

#include <cstddef>
#include <memory>

#include "vek/base/no_copy.h"

namespace vek::log {

// Safe from any thread. All of it throws std::system_error if the system fails.
class QueueLock : public NoCopy {
  public:
    enum Condition : std::size_t { notEmpty = 0, notFull = 1 };

    // Looks up the system's condition variables, unless that was done before.
    QueueLock();
    ~QueueLock();

    // Wait without bound for the mutex, and give it back. It is not to be taken twice.
    void lock();
    void unlock();

    // To be called with the mutex held: gives it back, sleeps until a wake-up, and takes it again.
    // May return without a wake-up. The mutex is held also when this throws.
    void wait(Condition condition);

    // Wakes one of those who wait for `condition` and haven't been woken yet, if there are any. To
    // be called with the mutex held.
    void wakeOne(Condition condition);

    // The same for all of them.
    void wakeAll(Condition condition);

  private:
    void leave(Condition condition);

    struct Native;
    struct Portable;

    // One of the two is null.
    const std::unique_ptr<Native> native;
    const std::unique_ptr<Portable> portable;
    // How many wait for each condition, and how many of these have been woken and haven't come to
    // themselves yet: a wake-up for nobody, or for who is waking already, costs nothing.
    std::size_t waiters[2] = {};
    std::size_t woken[2] = {};
};

}  // namespace vek::log
