// vek::VekPal: the object that a program makes first and destroys last. While it lives, the
// framework's process-wide facilities stand ready: optional system functions, the null device, the
// clocks, Winsock, console colours and the terminate handler.
#pragma once

#include <set>

#include "vek/base/host_name.h"
#include "vek/base/no_copy.h"
#include "vek/base/system_queries.h"
#include "vek/fs/program_path.h"
#include "vek/thread/mutex.h"

namespace vek {

// Something that is told when the console asks the program to quit.
class VekPalInit {
  public:
    // Runs on a thread that the system makes.
    virtual void onQuit() = 0;

  protected:
    ~VekPalInit() = default;
};

// Something that is told of a fork, on a system that has one.
class IForkHandler {
  public:
    virtual void afterFork() = 0;

  protected:
    ~IForkHandler() = default;
};

class VekPal final : public VekPalInit, public NoCopy {
  public:
    // Starts everything. With `handleQuit` this object takes part in the handling of console
    // control events, as enableQuitHandling tells. The next two have no effect. `quitContext` is
    // stored for the program and not read.
    //
    // Throws OsError if the console handler can't be installed, FsError if "nul" can't be opened,
    // NetError if Winsock can't be started; everything is undone then. To be constructed once, on
    // the thread that starts the process up, ahead of every other object of the framework.
    VekPal(bool handleQuit, int, int, void* quitContext);

    // Stops what the constructor started, apart from the clocks and the terminate handler, and the
    // shepherd of the child processes. With running children this takes until the next of them has
    // ended, deliberately. On the thread that ends the process.
    ~VekPal();

    // Tells each of the quit objects, in the order of their addresses. A vek::Exception ends the
    // round and is reported on std::cerr. Safe from any thread.
    void onQuit() override;

    // From now on each console control event, of whatever type, calls `onQuit` of this object, and
    // the system's own handling, which would end the program, is off. The objects are told on a
    // thread of the system, which walks them without a lock, deliberately: none may be destroyed
    // while an event is under way. Throws OsError. Stands on SetConsoleCtrlHandler.
    void enableQuitHandling();

    // Adds an object for onQuit. It is not owned and must outlive this. Safe from any thread.
    void addQuitObject(VekPalInit& object);

    // Does nothing: this system has no fork.
    void registerForkHandler(IForkHandler& handler);

    // The object constructed last; null once any has been destroyed.
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
