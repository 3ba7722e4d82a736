#include "vek/pal.h"

#include <iostream>
#include <mutex>

#include "vek/base/console_colors.h"
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

// The objects that handle console control events. The lock guards changes; the handler reads the
// set without it.
std::mutex palObjectsLock;
std::set<VekPal*> palObjects;
bool consoleHandlerInstalled = false;

BOOL WINAPI consoleHandler(DWORD /*ctrlType*/) {
    for (VekPal* pal : palObjects) {
        pal->onQuit();
    }
    // Handled, even if the set is empty: the default handler would end the process.
    return TRUE;
}

}  // namespace

VekPal::VekPal(bool handleQuit, int, int, void* quitContext)
    : handlesQuit(handleQuit), context(quitContext) {
    currentPal = this;
    try {
        start();
    } catch (...) {
        if (handlesQuit) {
            leaveQuitHandling();
        }
        fs::closeNullDevice();
        currentPal = nullptr;
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
    const std::lock_guard guard(palObjectsLock);
    handlesQuit = true;
    palObjects.insert(this);
    if (!consoleHandlerInstalled) {
        if (SetConsoleCtrlHandler(consoleHandler, TRUE) == 0) {
            throw OsError(GetLastError());
        }
        consoleHandlerInstalled = true;
    }
}

void VekPal::leaveQuitHandling() {
    const std::lock_guard guard(palObjectsLock);
    palObjects.erase(this);
    if (consoleHandlerInstalled && palObjects.empty()) {
        consoleHandlerInstalled = false;
        SetConsoleCtrlHandler(consoleHandler, FALSE);
    }
}

void VekPal::onQuit() {
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
