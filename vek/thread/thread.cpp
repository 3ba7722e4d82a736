#include "vek/thread/thread.h"

#include <exception>
#include <iostream>
#include <string>
#include <system_error>

#include <process.h>

#include "vek/base/terminate_handler.h"
#include "vek/exception.h"
#include "vek/os/objects.h"
#include "vek/os/thread_name.h"
#include "vek/thread/scope_guard.h"
#include "vek/time/clock.h"

namespace vek::thread {

namespace {

std::atomic<std::uint32_t> liveThreads = 0;

[[noreturn]] void throwSystemError(std::errc reason) {
    throw std::system_error(std::make_error_code(reason));
}

}  // namespace

Thread::Thread(const std::string& threadName, Runnable& target)
    : name(threadName), runInterface(std::make_unique<_Run_Interface>(target)) {}

Thread::Thread(const std::string& threadName) : name(threadName) {}

Thread::~Thread() {
    if (id != 0) {
        std::terminate();
    }
}

void Thread::run() {
    if (runInterface != nullptr) {
        runInterface->run();
    }
}

void Thread::start() {
    if (id != 0) {
        throw UsageError("The thread has already been started.");
    }
    // The body passes through this mutex before it runs anything, so that it finds `id` stored.
    const ScopeGuard guard(condition);
    state = RUNNING;
    auto record = std::make_unique<StartRecord>(StartRecord{this, &Thread::body});
    unsigned newId = 0;
    const std::uintptr_t created = _beginthreadex(nullptr, 0, enter, record.get(), 0, &newId);
    if (created == 0) {
        throwSystemError(std::errc::resource_unavailable_try_again);
    }
    // The new thread owns it.
    record.release();
    handle = reinterpret_cast<HANDLE>(created);
    id = newId;
}

unsigned WINAPI Thread::enter(void* startRecord) {
    const std::unique_ptr<StartRecord> record(static_cast<StartRecord*>(startRecord));
    (record->thread->*record->body)();
    return 0;
}

void Thread::body() {
    installTerminateHandlerOnNewThread();
    ++liveThreads;
    ownId = currentId();
    if (!name.empty()) {
        os::nameThread(name.c_str());
    }
    { const ScopeGuard startHasStoredTheId(condition); }
    runReported();
    {
        const ScopeGuard guard(condition);
        state = ENDED;
    }
    --liveThreads;
}

void Thread::runReported() {
    // Each report is one piece of output, so that those of several threads don't mix. A stream
    // would print the id in the format of the global locale.
    std::string report;
    try {
        run();
        return;
    } catch (const Exception& error) {
        report = "Thread " + name + " (" + std::to_string(id) + ")" +
                 " died with VEK exception:" + error.printableText() + "\n";
    } catch (const std::exception& error) {
        report = "Thread " + name + " (" + std::to_string(id) + ")" +
                 " died with std::exception: " + error.what() + "\n";
    } catch (...) {
        report =
            "Thread " + name + " (" + std::to_string(id) + ")" + " died with an unknown exception";
    }
    std::cerr << report;
}

void Thread::join() {
    if (id == 0) {
        throw UsageError("Trying to join an inactive thread.");
    }
    if (id == currentId()) {
        throwSystemError(std::errc::resource_deadlock_would_occur);
    }
    std::uint32_t waited = 0;
    if (os::waitObject(handle, INFINITE, &waited) == 0 || waited != WAIT_OBJECT_0) {
        throwSystemError(std::errc::no_such_process);
    }
    os::closeObject(handle);
    handle = nullptr;
    id = 0;
}

void Thread::terminate() {
    if (id == 0) {
        throw UsageError("Trying to terminate an inactive thread.");
    }
    const ScopeGuard guard(condition);
    if (state < TERMINATING) {
        state = TERMINATING;
        condition.wakeOne();
    }
}

bool Thread::wakeup() {
    if (id == 0) {
        throw UsageError("Trying to wakeup an inactive thread.");
    }
    const ScopeGuard guard(condition);
    if (state != WAITING) {
        return false;
    }
    state = RUNNING;
    condition.wakeOne();
    return true;
}

bool Thread::wait() {
    if (id != currentId()) {
        throw UsageError("Only the worker thread itself can wait");
    }
    ScopeGuard guard(condition);
    if (state != RUNNING) {
        return false;
    }
    state = WAITING;
    sleepUnder(guard, condition, [this] { condition.wait(); });
    return state == RUNNING;
}

bool Thread::wait(std::int64_t duration) {
    if (id != currentId()) {
        // Deliberately not quite the words of the other `wait`.
        throw UsageError("Only the worker thread itself wait");
    }
    time::MonotonicClock deadline(true);
    deadline += duration;
    ScopeGuard guard(condition);
    if (state != RUNNING) {
        return false;
    }
    state = WAITING;
    sleepUnder(guard, condition, [this, &deadline] { condition.waitUntil(deadline); });
    if (state == WAITING) {
        state = RUNNING;
    }
    return state == RUNNING;
}

Thread::State Thread::getState() const {
    const ScopeGuard guard(condition);
    return state;
}

std::uint32_t Thread::currentId() {
    return GetCurrentThreadId();
}

std::uint32_t Thread::liveCount() {
    return liveThreads;
}

}  // namespace vek::thread
