// vek::log::BoundedQueue: hands elements from any number of threads to others, first in, first out,
// and has those wait who find it full or empty.
#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <utility>

#include "vek/base/no_copy.h"
#include "vek/log/queue/queue_lock.h"

namespace vek::log {

// `Element` is a pointer, or owns what it points to; null is an element like any other. Elements
// that are left are destroyed with the queue, which has to outlive those who wait in it.
//
// The operations may be called from any thread, and throw std::system_error if the system fails to
// make them wait; an element that was to be appended is destroyed then.
template <class Element>
class BoundedQueue : public NoCopy {
  public:
    // Holds `maximumSize` elements at most.
    explicit BoundedQueue(std::size_t maximumSize) : capacity(maximumSize) {}

    // Appends `element`, once there is room for it: waits without bound, and drops nothing. Throws
    // std::bad_alloc, too.
    void push(Element element) {
        const std::lock_guard<QueueLock> guard(lock);
        while (elements.size() >= capacity) {
            lock.wait(QueueLock::notFull);
        }
        elements.push_back(std::move(element));
        lock.wakeOne(QueueLock::notEmpty);
    }

    // Takes the element at the front, once there is one: waits without bound.
    Element pop() {
        const std::lock_guard<QueueLock> guard(lock);
        while (elements.empty()) {
            lock.wait(QueueLock::notEmpty);
        }
        Element element = std::move(elements.front());
        elements.pop_front();
        lock.wakeOne(QueueLock::notFull);
        return element;
    }

    // Destroys all elements, and lets those go on who wait for room.
    void clear() {
        std::deque<Element> dropped;
        const std::lock_guard<QueueLock> guard(lock);
        dropped.swap(elements);
        lock.wakeAll(QueueLock::notFull);
    }

  private:
    std::deque<Element> elements;
    const std::size_t capacity;
    QueueLock lock;
};

}  // namespace vek::log
