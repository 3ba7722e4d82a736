#include "vek/proc/shepherd.h"

#include <atomic>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <utility>

#include "vek/exception.h"
#include "vek/proc/child.h"
#include "vek/thread/condition_functions.h"
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

// Signalled under childLock when a shepherd has no users any more.
thread::Condition& usersGone() {
    static thread::Condition& condition = *new thread::Condition(childLock());
    return condition;
}

// Locks for a scope unless the calling thread holds the lock already.
class VEK_SCOPED_CAPABILITY LockUnlessHeld : public NoCopy {
  public:
    explicit LockUnlessHeld(thread::Condition& lock) VEK_ACQUIRE(lock) {
        if (!lock.getMutex().isHeldByCaller()) {
            guard.emplace(lock);
        }
    }
    ~LockUnlessHeld() VEK_RELEASE() {}

  private:
    std::optional<thread::ScopeGuard> guard;
};

std::uint32_t nextNumber() {
    static std::atomic<std::uint32_t> last = 0;
    return ++last;
}

}  // namespace

bool Shepherd::ByHandle::operator()(const PROCESS_INFORMATION& a,
                                    const PROCESS_INFORMATION& b) const {
    return std::less<HANDLE>()(a.hProcess, b.hProcess);
}

Shepherd::Shepherd()
    : thread(threadName, *this),
      wakeEvent(CreateEventA(nullptr, FALSE, FALSE, nullptr)),
      number(nextNumber()) {
    if (wakeEvent == nullptr) {
        throw OsError(GetLastError());
    }
    // addChild must not fail half-way.
    handles.reserve(maxChildren);
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

void Shepherd::endWaits() {
    {
        const thread::ScopeGuard guard(lock);
        isClosed = true;
        lock.wakeAll();
    }
    thread::ScopeGuard guard(childLock());
    while (users != 0) {
        thread::sleepUnder(guard, usersGone(), [] { usersGone().wait(); });
    }
}

void Shepherd::refuseLockHeld() {
    if (lock.getMutex().isHeldByCaller()) {
        throw OsError(ERROR_POSSIBLE_DEADLOCK);
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

// Blocks until there are children, then copies their handles, appends the event and takes `inWait`.
// Returns false if the thread should end.
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
    removalsAtCopy = removals;
    inWait.lock();
    return true;
}

// Waits for the first exit in `watched`, then releases `inWait`. Takes one child; the next passes
// find others that have exited meanwhile.
void Shepherd::awaitEnd(const std::vector<HANDLE>& watched) {
    const DWORD ended =
        WaitForMultipleObjects(static_cast<DWORD>(watched.size()), watched.data(), FALSE, INFINITE);
    inWait.unlock();
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
// since new elements go to the end and only this thread removes any, unless `forget` has done so.
// Then even the value of the handle may be another child's by now: the next pass looks again.
// Returns the child if it has a callback, else null.
Child* Shepherd::takeEnded(HANDLE handle, std::size_t index) {
    const thread::ScopeGuard guard(lock);
    if (removals != removalsAtCopy) {
        return nullptr;
    }
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
    if (child != nullptr) {
        callbacks.emplace(info, child);
    }
    handles.push_back(info.hProcess);
    if (wasIdle) {
        lock.wakeAll();
    } else if (SetEvent(wakeEvent) == 0) {
        const DWORD error = GetLastError();
        handles.pop_back();
        callbacks.erase(info);
        throw OsError(error);
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
    if (isOwnThread()) {
        const LockUnlessHeld guard(lock);
        if (!takeResult(info, code)) {
            throw RuntimeError("need no lock but my result's not there?!");
        }
        return true;
    }
    refuseLockHeld();
    const ShepherdUse use(number);
    thread::ScopeGuard guard(lock);
    time::MonotonicClock deadline(timeoutMs != nullptr);
    if (timeoutMs != nullptr) {
        deadline += *timeoutMs;
    }
    while (!takeResult(info, code)) {
        if (isClosed) {
            throw RuntimeError("The shepherd of this child is gone");
        }
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
    const LockUnlessHeld guard(lock);
    exitCodes.erase(info);
    callbacks.erase(info);
    if (std::erase(handles, info.hProcess) == 0) {
        return;
    }
    ++removals;
    if (!isOwnThread()) {
        SetEvent(wakeEvent);
        const thread::ScopeGuard hasLeftTheWait(inWait);
    }
}

void ensureShepherd() {
    const thread::ScopeGuard guard(childLock());
    if (shepherd == nullptr) {
        thread::resolveConditionFunctions();
        if (thread::nativeConditions() == nullptr) {
            // The first child would end the thread with error 1131, and its `wait` never return.
            throw RuntimeError("Child processes need the system's condition variables");
        }
        auto made = std::make_unique<Shepherd>();
        made->start();
        shepherd = made.release();
    }
}

void shutdownShepherd() {
    if (shepherd == nullptr) {
        return;
    }
    shepherd->stop();
    Shepherd* ending = nullptr;
    {
        const thread::ScopeGuard guard(childLock());
        ending = std::exchange(shepherd, nullptr);
    }
    ending->endWaits();
    delete ending;
}

Shepherd* currentShepherd() {
    return shepherd;
}

ShepherdUse::ShepherdUse(std::uint32_t number) : used(nullptr) {
    const thread::ScopeGuard guard(childLock());
    if (shepherd != nullptr && (number == 0 || number == shepherd->number)) {
        used = shepherd;
        ++used->users;
    }
}

ShepherdUse::~ShepherdUse() {
    if (used != nullptr) {
        const thread::ScopeGuard guard(childLock());
        if (--used->users == 0) {
            usersGone().wakeAll();
        }
    }
}

}  // namespace vek::proc
