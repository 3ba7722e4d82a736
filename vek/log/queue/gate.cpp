#include "vek/log/queue/gate.h"

namespace vek::log {

// The gate is a queue with room for one thread.
constexpr QueueLock::Condition isFree = QueueLock::notFull;

// Holds the gate's lock. The end unlocks it and, if nobody is inside, wakes the next: also if this
// thread leaves by an exception, because it may have been woken for the turn that it doesn't take.
class VEK_SCOPED_CAPABILITY Gate::Waiting : public NoCopy {
  public:
    explicit Waiting(Gate& owner) VEK_ACQUIRE(owner.lock) : gate(owner) {
        owner.lock.lock();
        ++owner.waiting;
    }
    // In here the compiler doesn't know what the constructor has locked.
    ~Waiting() VEK_RELEASE() VEK_NO_LOCK_ANALYSIS {
        --gate.waiting;
        const bool wakes = gate.inside.load() == 0 && gate.lock.mustWake(isFree);
        gate.lock.unlock();
        if (wakes) {
            gate.lock.wake(isFree);
        }
    }

  private:
    Gate& gate;
};

void Gate::waitForTurn() {
    const Waiting turn(*this);
    while (inside.exchange(1) != 0) {
        lock.wait(isFree, inside, 1);
    }
}

void Gate::wakeNext() {
    lock.lock();
    const bool wakes = lock.mustWake(isFree);
    lock.unlock();
    if (wakes) {
        lock.wake(isFree);
    }
}

}  // namespace vek::log
