#include "vek/thread/condition_emulation.h"

#include <iostream>

#include "vek/exception.h"
#include "vek/os/objects.h"
#include "vek/thread/deadline.h"
#include "vek/thread/scope_guard.h"

namespace vek::thread {

ConditionEmulation::ConditionEmulation() : event(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {
    if (event == nullptr) {
        throw OsError(GetLastError());
    }
}

ConditionEmulation::~ConditionEmulation() {
    if (os::closeObject(event) == 0) {
        std::cerr << "error closing event!\n";
    }
}

void ConditionEmulation::wait(Mutex& mutex) {
    sleep(mutex, INFINITE);
}

bool ConditionEmulation::waitUntil(Mutex& mutex, const time::MonotonicClock& deadline) {
    return sleep(mutex, millisecondsUntil(deadline));
}

void ConditionEmulation::wakeOne() {
    {
        const ScopeGuard guard(lock);
        if (waiterCount == releaseCount) {
            return;
        }
        ++releaseCount;
        ++releasedUpTo;
        // A ticket whose waiter has left is not to take up the release.
        while (!abandoned.empty() && abandoned.front() == releasedUpTo) {
            abandoned.pop_front();
            ++releasedUpTo;
        }
    }
    signal();
}

void ConditionEmulation::wakeAll() {
    {
        const ScopeGuard guard(lock);
        if (waiterCount == releaseCount) {
            return;
        }
        releaseCount = waiterCount;
        releasedUpTo = nextTicket - 1;
        abandoned.clear();
    }
    signal();
}

void ConditionEmulation::signal() {
    if (os::setEvent(event) == 0) {
        throw OsError(GetLastError());
    }
}

// Returns true for a wake-up and false for a time-out.
bool ConditionEmulation::sleep(Mutex& mutex, std::uint32_t timeoutMs) {
    std::uint32_t ticket = 0;
    {
        const ScopeGuard guard(lock);
        ticket = nextTicket++;
        ++waiterCount;
    }
    mutex.unlock();
    do {
        // The error number after a failure.
        std::uint32_t waited = 0;
        const bool failed = os::waitObject(event, timeoutMs, &waited) == 0;
        if (failed || waited != WAIT_OBJECT_0) {
            giveUp(ticket, mutex);
            if (!failed) {
                return false;
            }
            throw OsError(waited);
        }
    } while (!leaveIfReleased(ticket, mutex));
    return true;
}

// Returns false if the event was signalled for another waiter.
bool ConditionEmulation::leaveIfReleased(std::uint32_t ticket, Mutex& mutex) {
    ScopeGuard guard(lock);
    if (releaseCount == 0 || ticket > releasedUpTo) {
        return false;
    }
    --waiterCount;
    --releaseCount;
    if (releaseCount == 0 && os::resetEvent(event) == 0) {
        const OsError error(GetLastError());
        guard.dismiss();
        lock.unlock();
        mutex.lock();
        throw error;
    }
    guard.dismiss();
    // Deliberately `lock` and not `mutex`: this throws, as the header says.
    lock.lock();
    return true;
}

void ConditionEmulation::giveUp(std::uint32_t ticket, Mutex& mutex) {
    {
        const ScopeGuard guard(lock);
        abandoned.push_back(ticket);
        --waiterCount;
    }
    mutex.lock();
}

}  // namespace vek::thread
