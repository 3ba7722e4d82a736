// vek::proc::Shepherd: watches all child processes of this program.
//
// Its thread waits for all running children at once, reads the exit code of a child as soon as it
// exits, and keeps the code until somebody collects it. Programs use vek::proc::Child, which does
// all of this itself. The first child creates the shepherd; vek::VekPal shuts it down.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "vek/base/compiler.h"
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

    // Drops the results that nobody collected. The thread must be stopped, and no thread may be in
    // waitForChild.
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

    // Makes all threads leave waitForChild: those without a result throw RuntimeError, now and from
    // now on. Blocks until no ShepherdUse holds this object. Call it after `stop`, once no new
    // ShepherdUse can get this object.
    void endWaits();

    // Guards everything in this object; signalled for each new result. Locking it twice on one
    // thread throws OsError with code 1131.
    thread::Condition& getLock() VEK_RETURN_CAPABILITY(lock) { return lock; }

    // Throws OsError with code 1131 if the calling thread holds the lock, and leaves it held once.
    void refuseLockHeld();

    // The number of this shepherd in the process, from 1.
    std::uint32_t getNumber() const { return number; }

    // Starts to watch `info`. `child` may be null; otherwise its callback is called when it exits,
    // and it must live until then. The caller holds the lock. Throws RuntimeError if maxChildren
    // are running; the process isn't watched then.
    void addChild(const PROCESS_INFORMATION& info, Child* child) VEK_REQUIRES(lock);

    // Blocks until the child has exited, for `*timeoutMs` milliseconds at most if that isn't null.
    // Stores the exit code in `code` and returns true, or returns false after a time-out; 0 looks
    // once. Each result is handed out once: a second wait for the same child times out or never
    // returns. thread/deadline.h says how the time-out is cut to 32 bits.
    //
    // Thread-safe. Throws RuntimeError once the shepherd has been shut down, and OsError with code
    // 1131 if the calling thread holds the lock, which it then still holds once. On the shepherd's
    // own thread, which runs the callbacks, it never blocks: throws RuntimeError if the result
    // isn't there, since it could never arrive.
    bool waitForChild(const PROCESS_INFORMATION& info, std::uint32_t& code,
                      const std::int64_t* timeoutMs);

    // Drops a child whose handle is about to be closed: it isn't watched any more, its callback
    // isn't called, and its result, if any, is gone. When this returns the thread doesn't wait on
    // the handle any more. Thread-safe; the caller may hold the lock.
    void forget(const PROCESS_INFORMATION& info);

  private:
    // Compares processes by their handles alone.
    struct ByHandle {
        bool operator()(const PROCESS_INFORMATION& a, const PROCESS_INFORMATION& b) const;
    };

    friend class ShepherdUse;

    bool isRunning() const;
    bool isOwnThread() const;
    bool awaitChildren(std::vector<HANDLE>& watched) VEK_TRY_ACQUIRE(true, inWait);
    void awaitEnd(const std::vector<HANDLE>& watched) VEK_RELEASE(inWait);
    Child* takeEnded(HANDLE handle, std::size_t index);
    bool takeResult(const PROCESS_INFORMATION& info, std::uint32_t& code) VEK_REQUIRES(lock);
    static void notifyChildExited(Child& child);

    thread::Thread thread;
    thread::Condition lock;
    // The running children, in order of registration.
    std::vector<HANDLE> handles VEK_GUARDED_BY(lock);
    // Interrupts the system's wait so that the thread reads `handles` again. Owned.
    HANDLE wakeEvent;
    // Held by the thread while it is in the system's wait. Taken with `lock` held; `lock` is never
    // taken with this one held.
    thread::Mutex inWait{true};
    // How often `forget` has removed a handle, and how often when the thread copied the handles: if
    // the two differ, the thread's copy is out of date.
    std::uint32_t removals VEK_GUARDED_BY(lock) = 0;
    std::uint32_t removalsAtCopy VEK_GUARDED_BY(lock) = 0;
    // Results that nobody has collected yet.
    std::map<PROCESS_INFORMATION, std::uint32_t, ByHandle> exitCodes VEK_GUARDED_BY(lock);
    // The children with a callback.
    std::map<PROCESS_INFORMATION, Child*, ByHandle> callbacks VEK_GUARDED_BY(lock);
    // Set by endWaits.
    bool isClosed VEK_GUARDED_BY(lock) = false;
    // The ShepherdUse objects that hold this shepherd; guarded by the lock of ensureShepherd.
    std::uint32_t users = 0;
    const std::uint32_t number;
};

// Creates and starts the shepherd if none exists. Thread-safe. Throws RuntimeError on a system
// without condition variables, and as the constructor and `start`; none exists then.
void ensureShepherd();

// Stops and deletes the shepherd, if one exists; blocks as Shepherd::stop. Threads that are still
// in a wait for a child then get RuntimeError, and this blocks until they have left the wait. Call
// it on the thread that ends the process.
void shutdownShepherd();

// Returns the shepherd, owned by the two functions above, or null. A program that ends without
// shutdownShepherd doesn't delete it: its thread ends with the process. Use a ShepherdUse where
// another thread may call shutdownShepherd meanwhile.
Shepherd* currentShepherd();

// Keeps shutdownShepherd from deleting the shepherd while this object exists. Thread-safe.
class ShepherdUse : public NoCopy {
  public:
    // Holds the current shepherd or, if `number` isn't 0, only the one with this number.
    explicit ShepherdUse(std::uint32_t number = 0);
    ~ShepherdUse();

    // Returns the shepherd, or null if there is none that fits.
    Shepherd* get() const { return used; }

  private:
    Shepherd* used;
};

}  // namespace vek::proc
