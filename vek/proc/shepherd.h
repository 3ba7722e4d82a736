// vek::proc::Shepherd: the one watcher of all child processes of this program.
//
// Its thread waits for all running children at once, fetches the exit code of each the moment it
// ends, and keeps the code until somebody asks for it. Programs use vek::proc::Child, which does
// all this by itself; the shepherd comes into being with the first child and goes with
// vek::VekPal.
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
    // The system waits for 64 objects at most, and one of them is the event that wakes the thread.
    static constexpr std::size_t maxChildren = MAXIMUM_WAIT_OBJECTS - 1;

    // Starts nothing. Throws OsError if there is no event to be had.
    Shepherd();

    // Forgets the results that nobody has collected. The thread has to be stopped; nobody may be
    // waiting.
    ~Shepherd() override;

    // Starts the thread. Throws as Thread::start does.
    void start();

    // Ends the thread and waits for it. With running children this takes until the next of them
    // has ended, deliberately: only then does the thread look up from the system's wait. A
    // vek::Exception is reported on std::cerr; on the shepherd's own thread std::system_error is
    // thrown (resource deadlock would occur).
    void stop();

    // The body of the thread.
    void run() override;

    // Guards all there is here; waked at each result. A second lock by its owner throws OsError
    // with code 1131.
    thread::Condition& getLock() { return lock; }

    // Watches `info` from now on. `child` may be null; otherwise it is told of its end through its
    // callback, and has to live until then. To be called with the lock held. Throws RuntimeError if
    // maxChildren are running: the process is not watched then.
    void addChild(const PROCESS_INFORMATION& info, Child* child);

    // Waits until the child has ended, `timeoutMs` milliseconds at most if that isn't null, stores
    // its exit code and gives true. A result is handed out once: a second wait for the same child
    // runs out of time, or never ends. False if the time has run out; a time-out of 0 looks once.
    // The time-out is cut as thread/deadline.h tells.
    //
    // Safe from any thread. On the shepherd's own, which runs the callbacks, nothing is waited for:
    // if the result isn't there RuntimeError is thrown, as it could never come.
    bool waitForChild(const PROCESS_INFORMATION& info, std::uint32_t& code,
                      const std::int64_t* timeoutMs);

    // For a child whose handle is closed by a callback though it runs. On the shepherd's own thread
    // it is watched no more; elsewhere nothing happens.
    void forget(const PROCESS_INFORMATION& info);

  private:
    // A process is known by its handle alone.
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
    // The running children, in the order of their registration.
    std::vector<HANDLE> handles;
    // Makes a running wait look at `handles` again. Owned.
    HANDLE wakeEvent;
    // What nobody has collected yet.
    std::map<PROCESS_INFORMATION, std::uint32_t, ByHandle> exitCodes;
    // Those that want to be told of their end.
    std::map<PROCESS_INFORMATION, Child*, ByHandle> callbacks;
};

// Makes and starts the shepherd if there is none, under the process-wide lock for that. Throws as
// the constructor and `start` do; there is none then.
void ensureShepherd();

// Stops the shepherd and deletes it, if there is one. For the thread that ends the process, when no
// other waits for children.
void shutdownShepherd();

// The shepherd, owned by the two functions above; null if there is none. It isn't deleted by an end
// of the program that leaves shutdownShepherd out: its thread ends with the process.
Shepherd* currentShepherd();

}  // namespace vek::proc
