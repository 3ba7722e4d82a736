// vek::thread::Thread: a worker thread that can sleep, be woken and be stopped.
//
// The body is a Runnable, or `run` overridden by a derived class. It loops on `wait` and returns
// when that returns false:
//
//     void Collector::run() {
//         while (thread.wait(500)) {
//             collect();
//         }
//     }
//
// A termination request interrupts nothing but `wait`.
//
// On a system without condition variables, a time-out of `wait` works, but a `wait` that `wakeup`
// or `terminate` ends doesn't return: it throws OsError with code 1131 (see condition_emulation.h),
// and so ends the worker unless the body catches it. If the body catches it, `terminate` and a
// `wakeup` of another `wait` block forever until that worker has ended, and the worker with them. A
// worker that is started again blocks forever in its first `wait`.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/thread/condition.h"
#include "vek/thread/runnable.h"

namespace vek::thread {

// Only one thread at a time, the owner, may start, join and destroy it, and only the worker may
// wait. The rest is thread-safe.
class Thread : public Runnable, public NoCopy {
  public:
    // What the thread does, as `getState` returns it.
    enum State : std::uint32_t {
        CREATED = 0,      // not started yet
        RUNNING = 1,      // the body runs
        WAITING = 2,      // in `wait`, may be woken
        TERMINATING = 3,  // asked to end
        ENDED = 4         // the body has ended
    };

    // A thread that runs `target` when it is started. `target` isn't owned and must live until
    // `join`. `threadName` is shown by debuggers and in reports; it may be empty. Throws OsError as
    // Condition's constructor does.
    Thread(const std::string& threadName, Runnable& target);

    // The body. Called by the new thread only.
    void run() override;

    // A thread that was started must be joined first: otherwise std::terminate is called.
    ~Thread() override;

    // Starts the system's thread. A joined thread may be started again. Calls _beginthreadex.
    // Throws UsageError if it is started already, and std::system_error (resource unavailable) if
    // the system can't start a thread; it may be tried again then.
    //
    // The worker may call all its operations at once, before `start` has returned.
    //
    // An exception that leaves the body ends the worker and nothing else. It is reported on
    // std::cerr, with the thread's id in plain decimal.
    void start();

    // Blocks until the body has ended. Calls WaitForSingleObject. Throws UsageError if the thread
    // isn't active, and std::system_error if the worker itself calls this (resource deadlock would
    // occur) or the wait fails (no such process); after that the thread still counts as active.
    void join();

    // Asks the worker to end, and wakes it; doesn't wait for its end. Does nothing if the worker
    // was asked before or has ended. Throws UsageError if the thread isn't active.
    void terminate();

    // Wakes the worker if it is in `wait`, and returns true. Otherwise changes nothing, also for
    // the next `wait`, and returns false. Throws UsageError if the thread isn't active.
    bool wakeup();

    // Worker only. Blocks until woken, and returns true; once termination was requested, returns
    // false without blocking. Throws UsageError on any other thread.
    //
    // After a spurious wake-up of the system it returns false too, as does every later `wait`.
    bool wait();

    // The same, but blocks at most `duration` milliseconds; a time-out returns true, like a
    // wake-up. A negative duration counts as 0. Truncated as said in deadline.h.
    bool wait(std::int64_t duration);

    // The thread's system id between `start` and `join`, else 0.
    std::uint32_t getId() const { return id; }

    State getState() const;  // what it does now

    // The system's id of the calling thread.
    static std::uint32_t currentId();

    // The number of thread bodies of this class that are running in this process.
    static std::uint32_t liveCount();

  protected:
    // For a derived class that overrides `run`. It must join before its own destructor ends.
    explicit Thread(const std::string& threadName);

  private:
    // Calls the Runnable, so that a class can have a Thread as a member and be run by it. The name
    // is reserved to the language's implementation, but users of this system know it.
    class _Run_Interface : public Runnable {
      public:
        explicit _Run_Interface(Runnable& toRun) : target(toRun) {}
        void run() override { target.run(); }

      private:
        Runnable& target;
    };

    struct StartRecord {
        Thread* thread;
        void (Thread::*body)();
    };

    static unsigned WINAPI enter(void* startRecord);
    void body();
    void runReported();

    HANDLE handle = nullptr;
    std::atomic<std::uint32_t> id = 0;
    // Set by the thread itself.
    std::atomic<std::uint32_t> ownId = 0;
    const std::string name;
    const std::unique_ptr<_Run_Interface> runInterface;
    // The worker waits on it.
    mutable Condition condition;
    State state VEK_GUARDED_BY(condition) = CREATED;
};

}  // namespace vek::thread
