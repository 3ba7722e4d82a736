// vek::log::BoundedQueue: a bounded first-in, first-out queue between threads. `push` blocks while
// it is full, `pop` while it is empty.
#pragma once

#include <cstddef>
#include <deque>
#include <utility>

#include "vek/base/no_copy.h"
#include "vek/base/std_mutex.h"
#include "vek/log/queue/queue_lock.h"

namespace vek::log {

// `Element` is a pointer, or owns what it points to; null is an element like any other. The
// destructor destroys the remaining elements. No thread may be waiting then.
//
// Thread-safe. The operations throw std::system_error if a wait fails; an element that was to be
// appended is destroyed then.
template <class Element>
class BoundedQueue : public NoCopy {
  public:
    // At most `maximumSize` elements.
    explicit BoundedQueue(std::size_t maximumSize) : capacity(maximumSize) {}

    // Appends `element`. Blocks, without a time-out, while the queue is full. Throws also what
    // appending throws, as std::bad_alloc; the queue is unchanged then.
    void push(Element element) {
        const LockGuard<QueueLock> guard(lock);
        while (elements.size() >= capacity) {
            lock.wait(QueueLock::notFull);
        }
        try {
            elements.push_back(std::move(element));
        } catch (...) {
            // This thread may have been woken for the room that it leaves free.
            lock.wakeOne(QueueLock::notFull);
            throw;
        }
        lock.wakeOne(QueueLock::notEmpty);
    }

    // Removes and returns the element at the front. Blocks, without a time-out, while the queue is
    // empty.
    Element pop() {
        const LockGuard<QueueLock> guard(lock);
        while (elements.empty()) {
            lock.wait(QueueLock::notEmpty);
        }
        Element element = std::move(elements.front());
        elements.pop_front();
        lock.wakeOne(QueueLock::notFull);
        return element;
    }

    // Destroys all elements and wakes all threads that wait for room.
    void clear() {
        std::deque<Element> dropped;
        const LockGuard<QueueLock> guard(lock);
        dropped.swap(elements);
        lock.wakeAll(QueueLock::notFull);
    }

  private:
    std::deque<Element> elements VEK_GUARDED_BY(lock);
    const std::size_t capacity;
    QueueLock lock;
};

}  // namespace vek::log
