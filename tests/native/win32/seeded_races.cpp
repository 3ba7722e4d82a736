// Two races on purpose, by which scripts/tsan sees that the sanitizer sees them through the
// stand-in: each run of one has to end with a report. Without an argument the same work is done
// properly, and has to end without one.
//
//   unlocked    one of two threads counts without the mutex that the other one holds
//   unsignaled  a thread reads what another one wrote, without waiting for its event
#include <atomic>
#include <cstdio>
#include <string>
#include <thread>

#include "vek/base/windows.h"
#include "vek/thread/mutex.h"
#include "vek/thread/scope_guard.h"
#include "vek/thread/thread.h"

namespace {

using vek::thread::Mutex;
using vek::thread::Runnable;
using vek::thread::ScopeGuard;
using vek::thread::Thread;

constexpr DWORD limitMs = 60000;

int count = 0;
std::atomic<int> arrived = 0;

// Returns on both threads once both are here. Otherwise one could end before the other starts, and
// the locks that both take there would put them in an order. Relaxed, so that this makes none.
void meet() {
    arrived.fetch_add(1, std::memory_order_relaxed);
    while (arrived.load(std::memory_order_relaxed) < 2) {
        std::this_thread::yield();
    }
}

class Counter : public Runnable {
  public:
    Counter(Mutex& toLock, bool doLock) : mutex(toLock), locks(doLock) {}
    void run() override {
        meet();
        for (int i = 0; i < 1000; ++i) {
            if (locks) {
                const ScopeGuard guard(mutex);
                ++count;
            } else {
                ++count;
            }
        }
    }

  private:
    Mutex& mutex;
    const bool locks;
};

void countOnTwoThreads(bool bothLock) {
    Mutex mutex(true);
    Counter careful(mutex, true);
    Counter other(mutex, bothLock);
    Thread first("first", careful);
    Thread second("second", other);
    first.start();
    second.start();
    first.join();
    second.join();
}

int written = 0;

void handOver(bool waitForSignal) {
    // By events alone, which two threads look up in the same table.
    const HANDLE ready = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    const HANDLE other = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    std::thread writer([ready] {
        written = 1;
        SetEvent(ready);
    });
    // In any case long enough that the writer comes first: what counts is the order that the
    // program has made, not the one that happened.
    WaitForSingleObject(waitForSignal ? ready : other, waitForSignal ? limitMs : 300);
    std::printf("%d\n", written);
    writer.join();
    CloseHandle(ready);
    CloseHandle(other);
}

}  // namespace

int main(int argc, char** argv) {
    const std::string race = argc > 1 ? argv[1] : "";
    countOnTwoThreads(race != "unlocked");
    handOver(race != "unsignaled");
}
