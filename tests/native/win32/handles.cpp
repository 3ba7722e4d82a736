// The table of handles, and waiting.
#include "handles.h"

#include <array>
#include <chrono>
#include <condition_variable>
#include <string_view>

#include <sched.h>

#include "replaced/tests/support/replaced_import.h"

namespace stand_in {

namespace {

// A lock that the sanitizer takes for no synchronisation: relaxed operations and fences. With an
// ordinary one, each use of any handle would order its thread after all former uses.
class UnseenLock {
  public:
    void lock() {
        while (taken.exchange(true, std::memory_order_relaxed)) {
            sched_yield();
        }
        std::atomic_thread_fence(std::memory_order_acquire);
    }
    void unlock() {
        std::atomic_thread_fence(std::memory_order_release);
        taken.store(false, std::memory_order_relaxed);
    }

  private:
    std::atomic<bool> taken = false;
};

// The value of a handle is 4 times its place, from 4 on. Relaxed, for the same reason.
struct Place {
    std::atomic<Object*> object = nullptr;
    std::atomic<DWORD> access = 0;
    std::atomic<DWORD> flags = 0;
    std::atomic<std::size_t> nameHash = 0;
    std::atomic<DWORD> processId = 0;
};

constexpr auto relaxed = std::memory_order_relaxed;

std::array<Place, 0x1000> places;
UnseenLock tableLock;

// Null if there is no such handle. The caller holds the lock.
Place* placeOf(HANDLE handle) {
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    if (value == 0 || value % 4 != 0 || value / 4 >= places.size()) {
        return nullptr;
    }
    Place& place = places[value / 4];
    return place.object.load(relaxed) != nullptr ? &place : nullptr;
}

BOOL failed(DWORD error) {
    SetLastError(error);
    return FALSE;
}

template <class Fits>
Reference found(Fits fits) {
    const std::lock_guard<UnseenLock> guard(tableLock);
    for (Place& place : places) {
        Object* const object = place.object.load(relaxed);
        if (object != nullptr && fits(place)) {
            object->retain();
            return Reference(object);
        }
    }
    return Reference(nullptr);
}

std::size_t hashOf(const char* name) {
    return std::hash<std::string_view>()(name);
}

}  // namespace

class Sleeper {
  public:
    // Ends the sleep. False if it has ended already: then the signal of `object` isn't used up.
    bool wake(const Object& object) {
        const std::lock_guard<std::mutex> guard(mutex);
        if (ended) {
            return false;
        }
        ended = true;
        by = &object;
        changed.notify_one();
        return true;
    }

    // Returns the object that ended the sleep, or null at `end`; `end` is null for no end.
    const Object* sleep(const std::chrono::steady_clock::time_point* end) {
        std::unique_lock<std::mutex> held(mutex);
        const auto hasEnded = [this] { return ended; };
        if (end == nullptr) {
            changed.wait(held, hasEnded);
        } else {
            changed.wait_until(held, *end, hasEnded);
        }
        ended = true;
        return by;
    }

  private:
    std::mutex mutex;
    std::condition_variable changed;
    bool ended = false;
    const Object* by = nullptr;
};

void Object::release() {
    if (references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this;
    }
}

// As on Windows, a signal ends the sleep of all that wait now, whatever follows it; that of an
// object that resets itself ends one sleep, and otherwise stays.
void Object::signalLocked() {
    for (Sleeper* const sleeper : sleepers) {
        if (sleeper->wake(*this) && autoReset) {
            return;
        }
    }
    signalled = true;
}

void Object::signal() {
    const std::lock_guard<std::mutex> guard(mutex);
    signalLocked();
}

void Object::reset() {
    const std::lock_guard<std::mutex> guard(mutex);
    signalled = false;
}

void Object::await(Sleeper& sleeper) {
    const std::lock_guard<std::mutex> guard(mutex);
    if (!signalled) {
        sleepers.push_back(&sleeper);
    } else if (sleeper.wake(*this)) {
        signalled = !autoReset;
    }
}

void Object::forget(Sleeper& sleeper) {
    const std::lock_guard<std::mutex> guard(mutex);
    std::erase(sleepers, &sleeper);
}

void Object::end(DWORD newCode) {
    const std::lock_guard<std::mutex> guard(mutex);
    if (!ended) {
        ended = true;
        exitCode = newCode;
        signalLocked();
    }
}

DWORD Object::code() const {
    const std::lock_guard<std::mutex> guard(mutex);
    return exitCode;
}

HANDLE newHandle(Reference object, DWORD access, const char* name, DWORD processId) {
    const std::lock_guard<UnseenLock> guard(tableLock);
    for (std::size_t number = 1; number < places.size(); ++number) {
        Place& place = places[number];
        if (place.object.load(relaxed) == nullptr) {
            object->retain();
            place.object.store(&*object, relaxed);
            place.access.store(access, relaxed);
            place.flags.store(0, relaxed);
            place.nameHash.store(name != nullptr ? hashOf(name) : 0, relaxed);
            place.processId.store(processId, relaxed);
            return reinterpret_cast<HANDLE>(number * 4);
        }
    }
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

Reference objectOf(HANDLE handle, DWORD access) {
    const std::lock_guard<UnseenLock> guard(tableLock);
    Place* const place = placeOf(handle);
    if (place == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return Reference(nullptr);
    }
    if ((place->access.load(relaxed) & access) != access) {
        SetLastError(ERROR_ACCESS_DENIED);
        return Reference(nullptr);
    }
    Object* const object = place->object.load(relaxed);
    object->retain();
    return Reference(object);
}

Reference namedObject(const char* name) {
    const std::size_t hash = hashOf(name);
    return found([hash](const Place& place) { return place.nameHash.load(relaxed) == hash; });
}

Reference processObject(DWORD processId) {
    return found(
        [processId](const Place& place) { return place.processId.load(relaxed) == processId; });
}

DWORD waitForAny(const std::vector<Reference>& objects, DWORD timeoutMs) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    Sleeper sleeper;
    for (const Reference& object : objects) {
        object->await(sleeper);
    }
    const Object* const by = sleeper.sleep(timeoutMs == INFINITE ? nullptr : &end);
    DWORD result = WAIT_TIMEOUT;
    for (std::size_t i = objects.size(); i-- > 0;) {
        objects[i]->forget(sleeper);
        if (&*objects[i] == by) {
            result = static_cast<DWORD>(WAIT_OBJECT_0 + i);
        }
    }
    return result;
}

}  // namespace stand_in

using stand_in::objectOf;
using stand_in::Reference;

BOOL CloseHandle(HANDLE handle) {
    stand_in::Object* closed = nullptr;
    {
        const std::lock_guard<stand_in::UnseenLock> guard(stand_in::tableLock);
        stand_in::Place* const place = stand_in::placeOf(handle);
        if (place == nullptr) {
            return stand_in::failed(ERROR_INVALID_HANDLE);
        }
        if ((place->flags.load(stand_in::relaxed) & HANDLE_FLAG_PROTECT_FROM_CLOSE) != 0) {
            return stand_in::failed(ERROR_INVALID_HANDLE);
        }
        closed = place->object.exchange(nullptr, stand_in::relaxed);
    }
    closed->release();
    return TRUE;
}

BOOL DuplicateHandle(HANDLE /*sourceProcess*/, HANDLE source, HANDLE /*targetProcess*/,
                     HANDLE* target, DWORD access, BOOL inherit, DWORD options) {
    DWORD ownAccess = 0;
    std::size_t nameHash = 0;
    DWORD processId = 0;
    Reference object = objectOf(source, 0);
    if (!object) {
        return FALSE;
    }
    {
        const std::lock_guard<stand_in::UnseenLock> guard(stand_in::tableLock);
        if (const stand_in::Place* const place = stand_in::placeOf(source)) {
            ownAccess = place->access.load(stand_in::relaxed);
            nameHash = place->nameHash.load(stand_in::relaxed);
            processId = place->processId.load(stand_in::relaxed);
        }
    }
    *target = stand_in::newHandle(std::move(object),
                                  (options & DUPLICATE_SAME_ACCESS) != 0 ? ownAccess : access,
                                  nullptr, processId);
    if (*target == nullptr) {
        return FALSE;
    }
    const std::lock_guard<stand_in::UnseenLock> guard(stand_in::tableLock);
    stand_in::Place* const place = stand_in::placeOf(*target);
    place->nameHash.store(nameHash, stand_in::relaxed);
    place->flags.store(inherit != 0 ? HANDLE_FLAG_INHERIT : 0, stand_in::relaxed);
    return TRUE;
}

BOOL GetHandleInformation(HANDLE handle, DWORD* flags) {
    const std::lock_guard<stand_in::UnseenLock> guard(stand_in::tableLock);
    const stand_in::Place* const place = stand_in::placeOf(handle);
    if (place == nullptr) {
        return stand_in::failed(ERROR_INVALID_HANDLE);
    }
    *flags = place->flags.load(stand_in::relaxed);
    return TRUE;
}

BOOL SetHandleInformation(HANDLE handle, DWORD mask, DWORD flags) {
    const std::lock_guard<stand_in::UnseenLock> guard(stand_in::tableLock);
    stand_in::Place* const place = stand_in::placeOf(handle);
    if (place == nullptr) {
        return stand_in::failed(ERROR_INVALID_HANDLE);
    }
    place->flags.store((place->flags.load(stand_in::relaxed) & ~mask) | (flags & mask),
                       stand_in::relaxed);
    return TRUE;
}

HANDLE CreateEventA(SECURITY_ATTRIBUTES* /*attributes*/, BOOL manualReset, BOOL signalled,
                    const char* name) {
    constexpr DWORD allAccess = 0x1F0003;
    if (name != nullptr && *name != '\0') {
        if (Reference existing = stand_in::namedObject(name)) {
            const HANDLE handle = stand_in::newHandle(std::move(existing), allAccess, name);
            SetLastError(ERROR_ALREADY_EXISTS);
            return handle;
        }
    }
    Reference event(new stand_in::Object(manualReset == FALSE));
    if (signalled != FALSE) {
        event->signal();
    }
    SetLastError(ERROR_SUCCESS);
    return stand_in::newHandle(std::move(event), allAccess, name);
}

HANDLE OpenEventA(DWORD access, BOOL /*inherit*/, const char* name) {
    Reference event = stand_in::namedObject(name);
    if (!event) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return nullptr;
    }
    return stand_in::newHandle(std::move(event), access, name);
}

BOOL SetEvent(HANDLE event) {
    const Reference object = objectOf(event, EVENT_MODIFY_STATE);
    if (object) {
        object->signal();
    }
    return object ? TRUE : FALSE;
}

BOOL ResetEvent(HANDLE event) {
    const Reference object = objectOf(event, EVENT_MODIFY_STATE);
    if (object) {
        object->reset();
    }
    return object ? TRUE : FALSE;
}

DWORD WaitForSingleObject(HANDLE object, DWORD timeoutMs) {
    return WaitForMultipleObjects(1, &object, FALSE, timeoutMs);
}

namespace {

DWORD waitForObjects(DWORD count, const HANDLE* objects, BOOL waitAll, DWORD timeoutMs) {
    if (count == 0 || count > MAXIMUM_WAIT_OBJECTS || waitAll != FALSE) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    std::vector<Reference> awaited;
    awaited.reserve(count);
    for (DWORD i = 0; i < count; ++i) {
        awaited.push_back(objectOf(objects[i], SYNCHRONIZE));
        if (!awaited.back()) {
            return WAIT_FAILED;
        }
    }
    return stand_in::waitForAny(awaited, timeoutMs);
}

}  // namespace

std::atomic<decltype(&WaitForMultipleObjects)> currentWaitForMultipleObjects = &waitForObjects;

// Relaxed: the look for a replacement orders no threads.
DWORD WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL waitAll, DWORD timeoutMs) {
    return currentWaitForMultipleObjects.load(std::memory_order_relaxed)(count, objects, waitAll,
                                                                         timeoutMs);
}

DWORD WaitForMultipleObjectsEx(DWORD count, const HANDLE* objects, BOOL waitAll, DWORD timeoutMs,
                               BOOL /*alertable*/) {
    return waitForObjects(count, objects, waitAll, timeoutMs);
}
