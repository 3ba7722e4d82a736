// vek::proc::Shepherd: watches all child processes of this program.
//
// Its thread waits for all running children at once, reads the exit code of a child as soon as it
// exits, and keeps the code until somebody collects it. Programs use vek::proc::Child, which does
// all of this itself. The first child creates the shepherd; vek::VekPal shuts it down.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/thread/condition.h"
#include "vek/thread/runnable.h"
#include "vek/thread/thread.h"

namespace vek::proc {

class Child;

class Shepherd final : public thread::Runnable, public NoCopy {
  public:
    // Windows waits for 64 objects at most, and one of them is the event that wakes the thread.
    static constexpr std::size_t maxChildren = MAXIMUM_WAIT_OBJECTS - 1;

    // Doesn't start the thread. Calls CreateEventA. Throws OsError.
    Shepherd();

    // Drops the results that nobody collected. The thread must be stopped, and no other thread may
    // be in waitForChild.
    ~Shepherd() override;

    // Starts the thread. Throws as Thread::start does.
    void start();

    // Ends the thread and blocks until it has ended. While children are running the thread sits in
    // the system's wait, and this deliberately doesn't interrupt it: it blocks until the next child
    // exits, or until another thread starts a child. A callback that is running is waited for, too.
    // A vek::Exception is reported on std::cerr. On the shepherd's own thread, as in a callback,
    // throws std::system_error (resource deadlock would occur); the thread ends once the callback
    // has returned, and another thread must call this again.
    void stop();

    // The thread's body.
    void run() override;

    // Guards everything in this object; signalled for each new result. Locking it twice on one
    // thread throws OsError with code 1131.
    thread::Condition& getLock() { return lock; }

    // Starts to watch `info`. `child` may be null; otherwise its callback is called when it exits,
    // and it must live until then. The caller holds the lock. Throws RuntimeError if maxChildren
    // are running; the process isn't watched then.
    void addChild(const PROCESS_INFORMATION& info, Child* child);

    // Blocks until the child has exited, for `*timeoutMs` milliseconds at most if that isn't null.
    // Stores the exit code in `code` and returns true, or returns false after a time-out; 0 looks
    // once. Each result is handed out once: a second wait for the same child times out or never
    // returns. thread/deadline.h says how the time-out is cut to 32 bits.
    //
    // Thread-safe. On the shepherd's own thread, which runs the callbacks, it never blocks: throws
    // RuntimeError if the result isn't there, since it could never arrive.
    bool waitForChild(const PROCESS_INFORMATION& info, std::uint32_t& code,
                      const std::int64_t* timeoutMs);

    // Stops watching a running child whose handle a callback is about to close. Does nothing on any
    // other thread than the shepherd's.
    void forget(const PROCESS_INFORMATION& info);

  private:
    // Compares processes by their handles alone.
    struct ByHandle {
        bool operator()(const PROCESS_INFORMATION& a, const PROCESS_INFORMATION& b) const;
    };

    bool isRunning() const;
    bool isOwnThread() const;
    bool awaitChildren(std::vector<HANDLE>& watched);
    void awaitEnd(const std::vector<HANDLE>& watched);
    Child* takeEnded(HANDLE handle, std::size_t index);
    bool takeResult(const PROCESS_INFORMATION& info, std::uint32_t& code);
    static void notifyChildExited(Child& child);

    thread::Thread thread;
    thread::Condition lock;
    // The running children, in order of registration.
    std::vector<HANDLE> handles;
    // Interrupts the system's wait so that the thread reads `handles` again. Owned.
    HANDLE wakeEvent;
    // Results that nobody has collected yet.
    std::map<PROCESS_INFORMATION, std::uint32_t, ByHandle> exitCodes;
    // The children with a callback.
    std::map<PROCESS_INFORMATION, Child*, ByHandle> callbacks;
};

// Creates and starts the shepherd if none exists. Thread-safe. Throws as the constructor and
// `start` do; none exists then.
void ensureShepherd();

// Stops and deletes the shepherd, if one exists. Call it on the thread that ends the process, while
// no other thread waits for children.
void shutdownShepherd();

// Returns the shepherd, owned by the two functions above, or null. A program that ends without
// shutdownShepherd doesn't delete it: its thread ends with the process.
Shepherd* currentShepherd();

}  // namespace vek::proc
