#include "vek/proc/shepherd.h"

#include <functional>
#include <iostream>
#include <memory>

#include "vek/exception.h"
#include "vek/proc/child.h"
#include "vek/thread/scope_guard.h"
#include "vek/time/clock.h"

namespace vek::proc {

namespace {

constexpr const char* threadName = "shepherd";

// The result of a child whose exit code can't be read; anything but success.
constexpr DWORD unreadableCode = 0xFFFFFFFF;

Shepherd* shepherd = nullptr;

// Never destroyed: other threads may start children while the process exits.
thread::Mutex& childLock() {
    static thread::Mutex& lock = *new thread::Mutex(true);
    return lock;
}

}  // namespace

bool Shepherd::ByHandle::operator()(const PROCESS_INFORMATION& a,
                                    const PROCESS_INFORMATION& b) const {
    return std::less<HANDLE>()(a.hProcess, b.hProcess);
}

Shepherd::Shepherd()
    : thread(threadName, *this), wakeEvent(CreateEventA(nullptr, FALSE, FALSE, nullptr)) {
    if (wakeEvent == nullptr) {
        throw OsError(GetLastError());
    }
}

Shepherd::~Shepherd() {
    CloseHandle(wakeEvent);
}

void Shepherd::start() {
    thread.start();
}

void Shepherd::stop() {
    try {
        thread.terminate();
        {
            // With the lock held the thread either sleeps already or sees the request to end.
            const thread::ScopeGuard guard(lock);
            lock.wakeAll();
        }
        thread.join();
    } catch (const Exception& error) {
        std::cerr << "Error joining " << threadName << " thread:\n"
                  << error.printableText() << std::endl;
    }
}

bool Shepherd::isRunning() const {
    return thread.getState() == thread::Thread::RUNNING;
}

bool Shepherd::isOwnThread() const {
    return thread.getId() == thread::Thread::currentId();
}

void Shepherd::run() {
    // Declared here so that it keeps its memory between passes.
    std::vector<HANDLE> watched;
    watched.reserve(maxChildren + 1);
    while (isRunning()) {
        if (!awaitChildren(watched)) {
            return;
        }
        awaitEnd(watched);
    }
}

// Blocks until there are children, then copies their handles and appends the event. Returns false
// if the thread should end.
bool Shepherd::awaitChildren(std::vector<HANDLE>& watched) {
    thread::ScopeGuard guard(lock);
    while (handles.empty()) {
        // Checked before the sleep, too: the request may have come before the lock was taken.
        if (!isRunning()) {
            return false;
        }
        thread::sleepUnder(guard, lock, [this] { lock.wait(); });
        if (!isRunning()) {
            return false;
        }
    }
    watched.assign(handles.begin(), handles.end());
    watched.push_back(wakeEvent);
    return true;
}

// Waits for the first exit in `watched`. Takes one child; the next passes find others that have
// exited meanwhile.
void Shepherd::awaitEnd(const std::vector<HANDLE>& watched) {
    const DWORD ended =
        WaitForMultipleObjects(static_cast<DWORD>(watched.size()), watched.data(), FALSE, INFINITE);
    if (ended == WAIT_FAILED) {
        std::cerr << threadName << ": Error waiting for multiple objects!\n";
        return;
    }
    const std::size_t index = ended - WAIT_OBJECT_0;
    if (index >= watched.size() - 1) {
        return;
    }
    if (Child* const child = takeEnded(watched[index], index)) {
        notifyChildExited(*child);
    }
}

// Stores the result of the child at `index`. It has the same index in `handles` as in the copy,
// since only this thread removes elements and new ones go to the end. Returns the child if it has a
// callback, else null.
Child* Shepherd::takeEnded(HANDLE handle, std::size_t index) {
    const thread::ScopeGuard guard(lock);
    handles.erase(handles.begin() + static_cast<std::ptrdiff_t>(index));
    PROCESS_INFORMATION info = {};
    info.hProcess = handle;
    DWORD code = unreadableCode;
    if (GetExitCodeProcess(handle, &code) == 0) {
        std::cerr << threadName << ": Failed to get exit code!\n";
    }
    exitCodes.emplace(info, code);
    Child* child = nullptr;
    if (const auto found = callbacks.find(info); found != callbacks.end()) {
        child = found->second;
        callbacks.erase(found);
    }
    lock.wakeAll();
    return child;
}

// An exception of any other type ends the thread.
void Shepherd::notifyChildExited(Child& child) {
    constexpr const char* report =
        "vek::proc::Shepherd::notifyChildExited: callback has thrown an exception:\n";
    try {
        if (IChildCallback* const callback = child.getNotifyCallback()) {
            callback->childExited(child);
        }
    } catch (const Exception& error) {
        std::cerr << report << error.printableText() << std::endl;
    } catch (const std::exception& error) {
        std::cerr << report << error.what() << std::endl;
    }
}

void Shepherd::addChild(const PROCESS_INFORMATION& info, Child* child) {
    if (handles.size() + 1 > maxChildren) {
        throw RuntimeError("Maximum number of child processes reached");
    }
    const bool wasIdle = handles.empty();
    handles.push_back(info.hProcess);
    if (child != nullptr) {
        callbacks.emplace(info, child);
    }
    if (wasIdle) {
        lock.wakeAll();
    } else if (SetEvent(wakeEvent) == 0) {
        throw OsError(GetLastError());
    }
}

bool Shepherd::takeResult(const PROCESS_INFORMATION& info, std::uint32_t& code) {
    const auto found = exitCodes.find(info);
    if (found == exitCodes.end()) {
        return false;
    }
    code = found->second;
    exitCodes.erase(found);
    return true;
}

bool Shepherd::waitForChild(const PROCESS_INFORMATION& info, std::uint32_t& code,
                            const std::int64_t* timeoutMs) {
    thread::ScopeGuard guard(lock);
    if (isOwnThread()) {
        if (!takeResult(info, code)) {
            throw RuntimeError("need no lock but my result's not there?!");
        }
        return true;
    }
    time::MonotonicClock deadline(timeoutMs != nullptr);
    if (timeoutMs != nullptr) {
        deadline += *timeoutMs;
    }
    while (!takeResult(info, code)) {
        const bool inTime = thread::sleepUnder(guard, lock, [&] {
            if (timeoutMs != nullptr) {
                return lock.waitUntil(deadline);
            }
            lock.wait();
            return true;
        });
        if (!inTime) {
            return false;
        }
    }
    return true;
}

void Shepherd::forget(const PROCESS_INFORMATION& info) {
    if (!isOwnThread()) {
        return;
    }
    const thread::ScopeGuard guard(lock);
    std::erase(handles, info.hProcess);
    callbacks.erase(info);
}

void ensureShepherd() {
    const thread::ScopeGuard guard(childLock());
    if (shepherd == nullptr) {
        auto made = std::make_unique<Shepherd>();
        made->start();
        shepherd = made.release();
    }
}

void shutdownShepherd() {
    if (shepherd != nullptr) {
        shepherd->stop();
        delete shepherd;
        shepherd = nullptr;
    }
}

Shepherd* currentShepherd() {
    return shepherd;
}

}  // namespace vek::proc
