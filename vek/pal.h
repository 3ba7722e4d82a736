// vek::VekPal: starts and stops the framework. A program constructs it first and destroys it last.
// While it exists the framework's process-wide facilities are ready: optional system functions, the
// null device, the clocks, Winsock, console colours and the terminate handler.
#pragma once

#include <set>

#include "vek/base/host_name.h"
#include "vek/base/no_copy.h"
#include "vek/base/system_queries.h"
#include "vek/fs/program_path.h"
#include "vek/thread/mutex.h"

namespace vek {

// Notified when the console asks the program to quit.
class VekPalInit {
  public:
    // Called on a thread that Windows creates for the event.
    virtual void onQuit() = 0;

  protected:
    ~VekPalInit() = default;
};

// Notified of a fork, on a system that has one; never called on Windows.
class IForkHandler {
  public:
    virtual void afterFork() = 0;  // in the child process

  protected:
    ~IForkHandler() = default;
};

class VekPal final : public VekPalInit, public NoCopy {
  public:
    // Starts everything. With `handleQuit` this object handles console control events; see
    // enableQuitHandling. The two ints have no effect. `quitContext` is stored and never read.
    //
    // Throws OsError if the console handler can't be installed, FsError if "nul" can't be opened,
    // NetError if Winsock can't be started; everything is undone then, and another VekPal that
    // exists stays usable. Construct it once, on the thread that starts the process up, before any
    // other object of the framework: the end of either of two stops what both use.
    VekPal(bool handleQuit, int, int, void* quitContext);

    // Stops the shepherd of the child processes and everything that the constructor started, except
    // the clocks and the terminate handler. Destroy it on the thread that ends the process.
    //
    // Blocks until a console control event that is being handled has been handled, so that no quit
    // object is called afterwards: a quit object must not wait for this. While children are running
    // it blocks until the next of them exits, deliberately. Threads that are in proc::Child::wait
    // then get RuntimeError, and this blocks until they have left it.
    ~VekPal();

    // Calls onQuit of each quit object, in the order of their addresses. A vek::Exception ends the
    // round and is reported on std::cerr. Thread-safe: rounds of two threads run one after the
    // other. A quit object that calls this again gets OsError with code 1131.
    void onQuit() override;

    // Installs a handler that calls this object's `onQuit` for every console control event,
    // whatever its type, and reports the event as handled. The handler runs on a thread that
    // Windows creates. Calls SetConsoleCtrlHandler. Throws OsError.
    //
    // For Ctrl-C and Ctrl-Break the program goes on after that: it has to quit by itself. For the
    // closing of the console window, a log-off and a shutdown it can't go on: Windows ends the
    // process as soon as the handler has returned, or after a time-out of some seconds. Whatever
    // must be done before the end has to be done, or waited for, in the quit objects.
    //
    // In a service, don't handle quit events: a service gets CTRL_LOGOFF_EVENT when any user logs
    // off, and the handler, which doesn't look at the type, would make it quit.
    void enableQuitHandling();

    // Adds an object for onQuit. Not owned; it must outlive this object. Thread-safe, but blocks
    // while onQuit runs. Throws OsError with code 1131 if a quit object calls it.
    void addQuitObject(VekPalInit& object);

    // Does nothing: Windows has no fork.
    void registerForkHandler(IForkHandler& handler);

    // Returns the object constructed last; null once any has been destroyed.
    static VekPal* current();
    static void setCurrent(VekPal* pal);

  private:
    void start();
    void leaveQuitHandling();

    bool handlesQuit;
    thread::Mutex lock{true};
    std::set<VekPalInit*> quitObjects VEK_GUARDED_BY(lock);
    void* const context;
};

}  // namespace vek
