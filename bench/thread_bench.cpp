// thread_bench: the time to take and release a lock, compared with the bare system calls.
#include <thread>

#include "bench/measure.h"
#include "vek/thread/condition.h"
#include "vek/thread/mutex.h"
#include "vek/thread/read_write_lock.h"
#include "vek/thread/scope_guard.h"

namespace {

using namespace vek::thread;

constexpr int lockRounds = 501;
constexpr int locksPerRound = 2000;
constexpr int handOverRounds = 101;
constexpr int handOversPerRound = 200;

// Passes the turn to the other thread and waits until it comes back, `handOversPerRound` times.
template <class Baton>
void handOver(Baton& baton) {
    for (int i = 0; i < handOversPerRound; ++i) {
        baton.waitFor(0);
        baton.passOn();
    }
}

class VekBaton {
  public:
    void waitFor(int own) {
        const ScopeGuard guard(condition);
        while (turn != own) {
            condition.wait();
        }
    }
    void passOn() {
        const ScopeGuard guard(condition);
        turn = 1 - turn;
        condition.wakeOne();
    }

  private:
    Condition condition;
    int turn = 0;
};

class BareBaton {
  public:
    BareBaton() {
        InitializeCriticalSection(&section);
        InitializeConditionVariable(&variable);
    }
    ~BareBaton() { DeleteCriticalSection(&section); }
    BareBaton(const BareBaton&) = delete;
    BareBaton& operator=(const BareBaton&) = delete;

    void waitFor(int own) {
        EnterCriticalSection(&section);
        while (turn != own) {
            SleepConditionVariableCS(&variable, &section, INFINITE);
        }
        LeaveCriticalSection(&section);
    }
    void passOn() {
        EnterCriticalSection(&section);
        turn = 1 - turn;
        WakeConditionVariable(&variable);
        LeaveCriticalSection(&section);
    }

  private:
    CRITICAL_SECTION section;
    CONDITION_VARIABLE variable;
    int turn = 0;
};

// The other thread of a hand-over. Answers in all rounds and in the one that warms up.
template <class Baton>
std::thread partner(Baton& baton) {
    return std::thread([&baton] {
        for (int i = 0; i < (vek_bench::repetitions(handOverRounds) + 1) * handOversPerRound; ++i) {
            baton.waitFor(1);
            baton.passOn();
        }
    });
}

void measureMutex() {
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    const auto bare = [&section] {
        for (int i = 0; i < locksPerRound; ++i) {
            EnterCriticalSection(&section);
            LeaveCriticalSection(&section);
        }
    };
    Mutex checking(true);
    Mutex recursive(false);
    const auto lockAndUnlock = [](Mutex& mutex) {
        for (int i = 0; i < locksPerRound; ++i) {
            mutex.lock();
            mutex.unlock();
        }
    };
    using vek_bench::compare;
    compare(
        "Mutex lock + unlock, re-entry checked", lockRounds, locksPerRound,
        [&] { lockAndUnlock(checking); }, bare, 1.3);
    compare(
        "Mutex lock + unlock, recursive", lockRounds, locksPerRound,
        [&] { lockAndUnlock(recursive); }, bare, 1.3);
    compare(
        "ScopeGuard on a Mutex", lockRounds, locksPerRound,
        [&] {
            for (int i = 0; i < locksPerRound; ++i) {
                const ScopeGuard guard(checking);
            }
        },
        bare);
    DeleteCriticalSection(&section);
}

void measureReadWriteLock() {
    SRWLOCK bareLock = SRWLOCK_INIT;
    ReadWriteLock lock;
    vek_bench::compare(
        "ReadWriteLock lockShared + unlock", lockRounds, locksPerRound,
        [&] {
            for (int i = 0; i < locksPerRound; ++i) {
                lock.lockShared();
                lock.unlock();
            }
        },
        [&] {
            for (int i = 0; i < locksPerRound; ++i) {
                AcquireSRWLockShared(&bareLock);
                ReleaseSRWLockShared(&bareLock);
            }
        });
}

void measureHandOver() {
    VekBaton vekBaton;
    BareBaton bareBaton;
    std::thread vekPartner = partner(vekBaton);
    std::thread barePartner = partner(bareBaton);
    vek_bench::compare(
        "Condition, hand-over to a thread and back", handOverRounds, handOversPerRound,
        [&] { handOver(vekBaton); }, [&] { handOver(bareBaton); }, 1.3);
    vekPartner.join();
    barePartner.join();
}

void measureAll() {
    measureMutex();
    measureReadWriteLock();
    measureHandOver();
}

}  // namespace

int main(int argc, char** argv) {
    return vek_bench::runBenchmark(argc, argv,
                                   "thread_bench [--smoke] [--json]\n"
                                   "\n"
                                   "The locks and the condition, compared with critical sections,\n"
                                   "slim locks and condition variables.\n",
                                   measureAll);
}
