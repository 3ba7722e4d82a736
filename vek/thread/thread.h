// vek::thread::Thread: a worker thread that can be told to sleep, be woken and stop.
//
// The body is a Runnable, or `run` overridden by a derived class. It loops on `wait` and leaves
// when that gives false:
//
//     void Collector::run() {
//         while (thread.wait(500)) {
//             collect();
//         }
//     }
//
// Being asked to terminate interrupts nothing else that the body does.
//
// On a system without condition variables a sleep is good for one wake-up. One that ends by
// time-out is as it should be, but one that `wakeup` or `terminate` ends doesn't return: it throws
// OsError with code 1131 (see condition_emulation.h), and so ends the worker unless the body
// catches it. From then on `wakeup` and `terminate` block for good if they have to wake that
// worker, and a worker that is started anew blocks for good in its first sleep.
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

// One thread at a time, the owner, starts, joins and destroys it. The worker alone may wait. The
// rest is safe from any thread.
class Thread : public Runnable, public NoCopy {
  public:
    enum State : std::uint32_t {
        CREATED = 0,      // not started yet
        RUNNING = 1,      //
        WAITING = 2,      // in `wait`, may be woken
        TERMINATING = 3,  // asked to end
        ENDED = 4         // the body has ended
    };

    // A thread that is to run `target`, which isn't owned and has to live until `join`. Starts
    // nothing. `threadName` is told to a debugger and in reports; it may be empty. Throws OsError
    // as Condition's constructor does.
    Thread(const std::string& threadName, Runnable& target);

    // The body; not to be called from elsewhere.
    void run() override;

    // A thread that was started has to be joined first: otherwise std::terminate is called.
    ~Thread() override;

    // Starts the system's thread. A joined thread may be started anew. Throws UsageError if it is
    // started already, and std::system_error (resource unavailable) if the system gives no thread,
    // after which it may be tried again. Stands on _beginthreadex.
    //
    // The worker may call everything that is open to it at once, before this has returned.
    //
    // An exception that leaves the body ends the worker and nothing else. It is reported on
    // std::cerr.
    void start();

    // Waits without bound until the body has ended. Throws UsageError if the thread isn't active,
    // and std::system_error if the worker itself calls this (resource deadlock would occur) or the
    // wait fails (no such process), after which the thread still counts as active. Stands on
    // WaitForSingleObject.
    void join();

    // Asks the worker to end, and wakes it; doesn't wait for it. Does nothing to one that was asked
    // before or has ended. Throws UsageError if the thread isn't active.
    void terminate();

    // Wakes the worker if it sleeps, and gives true. Otherwise nothing is changed, nor kept for the
    // next sleep, and the result is false. Throws UsageError if the thread isn't active.
    bool wakeup();

    // Worker only. Sleeps until woken, and gives true; gives false, without a sleep, once
    // termination was requested. Throws UsageError on any other thread.
    //
    // The system may in theory end a sleep by itself: that gives false too, as does every `wait`
    // from then on.
    bool wait();

    // The same, with a sleep of `duration` milliseconds at most; a time-out gives true, like a
    // wake-up. A negative duration gives up the processor for a moment. Cut as deadline.h tells.
    bool wait(std::int64_t duration);

    // The system's id of the thread, from `start` to `join`; otherwise 0.
    std::uint32_t getId() const { return id; }

    State getState() const;

    // The system's id of the calling thread.
    static std::uint32_t currentId();

    // The number of bodies that are running in this process, of all threads of this class.
    static std::uint32_t liveCount();

  protected:
    // For a derived class that overrides `run`. It has to join before its own destructor ends.
    explicit Thread(const std::string& threadName);

  private:
    // The bridge to the object that runs here, so that a class can have a Thread as a member and be
    // run by it.
    // The name, though reserved to the language's implementation, is what the system's users know.
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
    // As the thread itself sees it.
    std::atomic<std::uint32_t> ownId = 0;
    const std::string name;
    const std::unique_ptr<_Run_Interface> runInterface;
    // Guards `state`, and is where the worker sleeps.
    mutable Condition condition;
    State state = CREATED;
};

}  // namespace vek::thread
