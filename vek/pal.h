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
    virtual void afterFork() = 0;

  protected:
    ~IForkHandler() = default;
};

class VekPal final : public VekPalInit, public NoCopy {
  public:
    // Starts everything. With `handleQuit` this object handles console control events; see
    // enableQuitHandling. The two ints have no effect. `quitContext` is stored and never read.
    //
    // Throws OsError if the console handler can't be installed, FsError if "nul" can't be opened,
    // NetError if Winsock can't be started; everything is undone then. Construct it once, on the
    // thread that starts the process up, before any other object of the framework.
    VekPal(bool handleQuit, int, int, void* quitContext);

    // Stops the shepherd of the child processes and everything that the constructor started, except
    // the clocks and the terminate handler. While children are running this blocks until the next
    // of them exits, deliberately. Destroy it on the thread that ends the process.
    ~VekPal();

    // Calls onQuit of each quit object, in the order of their addresses. A vek::Exception ends the
    // round and is reported on std::cerr. Thread-safe.
    void onQuit() override;

    // Installs a handler that calls this object's `onQuit` for every console control event,
    // whatever its type, and reports the event as handled. The handler runs on a thread that
    // Windows creates and reads the set of VekPal objects without a lock, deliberately: don't
    // destroy one while an event is being handled. Calls SetConsoleCtrlHandler. Throws OsError.
    //
    // For Ctrl-C and Ctrl-Break the program goes on after that: it has to quit by itself. For the
    // closing of the console window, a log-off and a shutdown it can't go on: Windows ends the
    // process as soon as the handler has returned, or after a time-out of some seconds. Whatever
    // must be done before the end has to be done in the quit objects.
    //
    // In a service, don't handle quit events: a service gets CTRL_LOGOFF_EVENT when any user logs
    // off, and the handler, which doesn't look at the type, would make it quit.
    void enableQuitHandling();

    // Adds an object for onQuit. Not owned; it must outlive this object. Thread-safe, but blocks
    // while onQuit runs, and throws OsError with code 1131 within it.
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
    std::set<VekPalInit*> quitObjects;
    void* const context;
};

}  // namespace vek
