// Compiled twice by tests: with WITH_LOCK set to 1, which has to work, and to 0, where the compiler
// has to find each missing lock.
#include <string>

#include "vek/base/std_mutex.h"
#include "vek/log/logger.h"
#include "vek/log/queue/queue_lock.h"
#include "vek/proc/inherited_stream.h"
#include "vek/proc/shepherd.h"
#include "vek/proc/start_lock.h"
#include "vek/thread/condition.h"
#include "vek/thread/mutex.h"
#include "vek/thread/scope_guard.h"

#if WITH_LOCK
#define LOCK(...) __VA_ARGS__
#else
#define LOCK(...)
#endif

class Counter {
  public:
    int underMutex() {
        LOCK(const vek::thread::ScopeGuard guard(mutex);)
        return ++byMutex;  // missing-error {{writing variable 'byMutex' requires holding mutex}}
    }

    void underCondition() {
        LOCK(const vek::thread::ScopeGuard guard(condition);)
        byCondition = 0;  // missing-error {{writing variable 'byCondition' requires holding}}
        condition.wakeAll();
    }

    int underStdMutex() {
        LOCK(const vek::StdGuard guard(stdMutex);)
        return byStdMutex;  // missing-error {{reading variable 'byStdMutex' requires holding}}
    }

    void callsWhatNeedsTheLock() {
        LOCK(const vek::thread::ScopeGuard guard(mutex);)
        needsTheLock();  // missing-error {{calling function 'needsTheLock' requires holding}}
    }

    void unlocks() {
        mutex.lock();  // missing-note {{mutex acquired here}}
        LOCK(mutex.unlock();)
    }  // missing-error {{mutex 'mutex' is still held at the end of function}}

    bool mustWakeAWaiterOfTheQueue() {
        LOCK(const vek::LockGuard<vek::log::QueueLock> guard(queueLock);)
        return queueLock.mustWake(vek::log::QueueLock::notEmpty);  // missing-error {{holding}}
    }

  private:
    void needsTheLock() VEK_REQUIRES(mutex) { byMutex = 0; }

    vek::thread::Mutex mutex{true};
    int byMutex VEK_GUARDED_BY(mutex) = 0;
    vek::thread::Condition condition;
    int byCondition VEK_GUARDED_BY(condition) = 0;
    vek::StdMutex stdMutex;
    int byStdMutex VEK_GUARDED_BY(stdMutex) = 0;
    vek::log::QueueLock queueLock;
};

void addChild(vek::proc::Shepherd& shepherd) {
    LOCK(const vek::thread::ScopeGuard guard(shepherd.getLock());)
    shepherd.addChild({}, nullptr);  // missing-error {{requires holding mutex 'shepherd.lock'}}
}

void inherit() {
    LOCK(const vek::thread::ScopeGuard starting(vek::proc::startLock());)
    const vek::proc::InheritedStream input(nullptr, 1);  // missing-error {{mutex 'startLock()'}}
}

std::string textOf(vek::log::Logger& logger) {
    LOCK(logger.stream() << "text";)
    std::string text = logger.streamText();  // missing-error {{mutex 'logger.lock'}}
    LOCK(logger.releaseStream();)
    return text;
}
