#include "vek/pal.h"

#include <condition_variable>
#include <iostream>

#include "vek/base/console_colors.h"
#include "vek/base/std_mutex.h"
#include "vek/base/terminate_handler.h"
#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/null_device.h"
#include "vek/net/winsock.h"
#include "vek/proc/shepherd.h"
#include "vek/thread/condition_functions.h"
#include "vek/thread/read_write_functions.h"
#include "vek/thread/scope_guard.h"
#include "vek/time/clock_source.h"

namespace vek {

namespace {

VekPal* currentPal = nullptr;

// Held while the set of objects that handle console control events changes, and across
// SetConsoleCtrlHandler. The handler doesn't take it: a quit object may construct or destroy a
// VekPal.
StdMutex palObjectsLock;
bool consoleHandlerInstalled VEK_GUARDED_BY(palObjectsLock) = false;

// The set itself, and the handlers that are running. `walkLock` is held for moments only.
StdMutex walkLock;
std::condition_variable handlerEnded;
std::set<VekPal*> palObjects VEK_GUARDED_BY(walkLock);
unsigned runningHandlers VEK_GUARDED_BY(walkLock) = 0;
thread_local bool isHandlerThread = false;

// Returns the next object after `pal`, or null.
VekPal* nextAfter(VekPal* pal) {
    const StdGuard guard(walkLock);
    const auto next = palObjects.upper_bound(pal);
    return next != palObjects.end() ? *next : nullptr;
}

BOOL WINAPI consoleHandler(DWORD /*ctrlType*/) {
    {
        const StdGuard guard(walkLock);
        ++runningHandlers;
    }
    isHandlerThread = true;
    for (VekPal* pal = nextAfter(nullptr); pal != nullptr; pal = nextAfter(pal)) {
        pal->onQuit();
    }
    isHandlerThread = false;
    const StdGuard guard(walkLock);
    --runningHandlers;
    handlerEnded.notify_all();
    // Handled, even if the set is empty: the default handler would end the process.
    return TRUE;
}

// Blocks until no handler uses an object that was removed from the set. A quit object that destroys
// a VekPal isn't waited for: its own handler is running.
void awaitHandlers() {
    if (!isHandlerThread) {
        StdGuard guard(walkLock);
        while (runningHandlers != 0) {
            handlerEnded.wait(guard.forWait());
        }
    }
}

// Locking would throw the same error, but leave the lock entered twice.
void refuseReentry(const thread::Mutex& lock) {
    if (lock.isHeldByCaller()) {
        throw OsError(ERROR_POSSIBLE_DEADLOCK);
    }
}

}  // namespace

VekPal::VekPal(bool handleQuit, int, int, void* quitContext)
    : handlesQuit(handleQuit), context(quitContext) {
    VekPal* const former = currentPal;
    const bool isFirst = fs::nullInput() == nullptr;
    currentPal = this;
    try {
        start();
    } catch (...) {
        if (handlesQuit) {
            leaveQuitHandling();
        }
        if (isFirst) {
            fs::closeNullDevice();
        }
        currentPal = former;
        throw;
    }
}

void VekPal::start() {
    if (handlesQuit) {
        enableQuitHandling();
    }
    thread::resolveConditionFunctions();
    thread::resolveReadWriteFunctions();
    fs::openNullDevice();
    time::initClocks();
    time::initClockOrigin();
    net::startWinsock();
    try {
        initConsoleColors();
        installTerminateHandler();
    } catch (...) {
        net::stopWinsock();
        throw;
    }
}

VekPal::~VekPal() {
    if (handlesQuit) {
        leaveQuitHandling();
    }
    proc::shutdownShepherd();
    net::stopWinsock();
    fs::closeNullDevice();
    thread::resetConditionFunctions();
    currentPal = nullptr;
}

void VekPal::enableQuitHandling() {
    const StdGuard guard(palObjectsLock);
    handlesQuit = true;
    {
        const StdGuard walk(walkLock);
        palObjects.insert(this);
    }
    if (!consoleHandlerInstalled) {
        if (SetConsoleCtrlHandler(consoleHandler, TRUE) == 0) {
            throw OsError(GetLastError());
        }
        consoleHandlerInstalled = true;
    }
}

void VekPal::leaveQuitHandling() {
    {
        const StdGuard guard(palObjectsLock);
        bool isLast = false;
        {
            const StdGuard walk(walkLock);
            palObjects.erase(this);
            isLast = palObjects.empty();
        }
        if (consoleHandlerInstalled && isLast) {
            consoleHandlerInstalled = false;
            SetConsoleCtrlHandler(consoleHandler, FALSE);
        }
    }
    awaitHandlers();
}

void VekPal::onQuit() {
    refuseReentry(lock);
    const thread::ScopeGuard guard(lock);
    try {
        for (VekPalInit* object : quitObjects) {
            object->onQuit();
        }
    } catch (const Exception& error) {
        std::cerr << "Error processing quit event:\n\n" << error.printableText() << std::endl;
    }
}

void VekPal::addQuitObject(VekPalInit& object) {
    refuseReentry(lock);
    const thread::ScopeGuard guard(lock);
    quitObjects.insert(&object);
}

void VekPal::registerForkHandler(IForkHandler& /*handler*/) {}

VekPal* VekPal::current() {
    return currentPal;
}

void VekPal::setCurrent(VekPal* pal) {
    currentPal = pal;
}

}  // namespace vek
