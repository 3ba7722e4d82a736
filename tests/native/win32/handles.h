// The objects behind the handles of windows.h.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <windows.h>

namespace stand_in {

// What a thread sleeps on while it waits for objects.
class Sleeper;

// An event, a thread, or a process.
class Object {
  public:
    // Not shared yet: one reference.
    explicit Object(bool resetsItself) : autoReset(resetsItself) {}
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    void retain() { references.fetch_add(1, std::memory_order_relaxed); }
    void release();

    void signal();
    void reset();

    // Ends the sleep of `sleeper` now, if the object is signalled, or with the next signal.
    void await(Sleeper& sleeper);
    void forget(Sleeper& sleeper);

    // Signals the object with an exit code, unless it was ended before.
    void end(DWORD exitCode);
    // STILL_ACTIVE before that.
    DWORD code() const;

    // Of a thread or a process. Set before the object is shared.
    DWORD id = 0;
    // Of a suspended thread: what it does once it is resumed. Guarded by the mutex.
    std::function<void()> body;
    mutable std::mutex mutex;

  private:
    ~Object() = default;
    void signalLocked();

    const bool autoReset;
    std::atomic<unsigned> references = 1;
    bool signalled = false;
    bool ended = false;
    DWORD exitCode = STILL_ACTIVE;
    std::vector<Sleeper*> sleepers;
};

// A reference to an object.
class Reference {
  public:
    explicit Reference(Object* retained) : object(retained) {}
    Reference(Reference&& other) noexcept : object(std::exchange(other.object, nullptr)) {}
    Reference(const Reference& other) : object(other.object) { object->retain(); }
    Reference& operator=(const Reference&) = delete;
    ~Reference() {
        if (object != nullptr) {
            object->release();
        }
    }
    explicit operator bool() const { return object != nullptr; }
    Object* operator->() const { return object; }
    Object& operator*() const { return *object; }

  private:
    Object* object;
};

// Makes a handle with the given access for an object; takes over the reference. `name` is null or
// that of an event, `processId` 0 or that of a process.
HANDLE newHandle(Reference object, DWORD access, const char* name = nullptr, DWORD processId = 0);

// The object of a handle that has all of `access`. None, and GetLastError is 5 or 6, if there is no
// such handle.
Reference objectOf(HANDLE handle, DWORD access);

// The object with this name, or of this process; none if there is none.
Reference namedObject(const char* name);
Reference processObject(DWORD processId);

// Waits for the first of `objects`, as WaitForMultipleObjects.
DWORD waitForAny(const std::vector<Reference>& objects, DWORD timeoutMs);

// Runs `body` on a detached thread with the given id. False if the system gives none.
bool startThread(DWORD id, std::function<void()> body);
DWORD newThreadId();

}  // namespace stand_in
