#include "vek/thread/condition_emulation.h"

#include <iostream>

#include "vek/exception.h"
#include "vek/thread/deadline.h"
#include "vek/thread/scope_guard.h"

namespace vek::thread {

ConditionEmulation::ConditionEmulation() : event(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {
    if (event == nullptr) {
        throw OsError(GetLastError());
    }
}

ConditionEmulation::~ConditionEmulation() {
    if (CloseHandle(event) == 0) {
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
    if (SetEvent(event) == 0) {
        throw OsError(GetLastError());
    }
}

// Gives true for a wake-up and false for a time-out.
bool ConditionEmulation::sleep(Mutex& mutex, std::uint32_t timeoutMs) {
    std::uint32_t ticket = 0;
    {
        const ScopeGuard guard(lock);
        ticket = nextTicket++;
        ++waiterCount;
    }
    mutex.unlock();
    do {
        const DWORD waited = WaitForSingleObject(event, timeoutMs);
        if (waited != WAIT_OBJECT_0) {
            const OsError error(GetLastError());
            giveUp(ticket, mutex);
            if (waited == WAIT_TIMEOUT) {
                return false;
            }
            throw error;
        }
    } while (!leaveIfReleased(ticket, mutex));
    return true;
}

// Gives false if the event was signalled for another waiter.
bool ConditionEmulation::leaveIfReleased(std::uint32_t ticket, Mutex& mutex) {
    ScopeGuard guard(lock);
    if (releaseCount == 0 || ticket > releasedUpTo) {
        return false;
    }
    --waiterCount;
    --releaseCount;
    if (releaseCount == 0 && ResetEvent(event) == 0) {
        const OsError error(GetLastError());
        guard.dismiss();
        lock.unlock();
        mutex.lock();
        throw error;
    }
    guard.dismiss();
    // Deliberately the own lock and not `mutex`: this throws, as the header tells.
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
