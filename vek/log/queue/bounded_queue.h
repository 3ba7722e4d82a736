// vek::log::BoundedQueue: a bounded first-in, first-out queue between threads. `push` blocks while
// it is full, `pop` while it is empty.
#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <utility>

#include "vek/base/compiler.h"
#include "vek/base/no_copy.h"
#include "vek/log/queue/queue_lock.h"

namespace vek::log {

// `Element` is a pointer, or owns what it points to; null is an element like any other. The
// destructor destroys the remaining elements. No thread may be waiting then.
//
// Thread-safe. The operations throw std::system_error if a wait fails; an element that was to be
// appended is destroyed then.
//
// Threads are woken once the lock is free, so that a woken thread doesn't wait for it at once. At
// most one thread is on its way for room, and one for an element: each thread that leaves the queue
// wakes the next, if there is something left for that one.
template <class Element>
class BoundedQueue : public NoCopy {
  public:
    // At most `maximumSize` elements.
    explicit BoundedQueue(std::size_t maximumSize) : capacity(maximumSize) {}

    // Appends `element`. Blocks, without a time-out, while the queue is full. Throws also what
    // appending throws, as std::bad_alloc; the queue is unchanged then.
    void push(Element element) {
        const Turn turn(*this);
        while (elements.size() >= capacity) {
            lock.wait(QueueLock::notFull, size, size);
        }
        elements.push_back(std::move(element));
    }

    // Removes and returns the element at the front. Blocks, without a time-out, while the queue is
    // empty.
    Element pop() {
        const Turn turn(*this);
        while (elements.empty()) {
            lock.wait(QueueLock::notEmpty, size, size);
        }
        Element element = std::move(elements.front());
        elements.pop_front();
        return element;
    }

    // Destroys all elements and lets all threads go on that wait for room.
    void clear() {
        std::deque<Element> dropped;
        const Turn turn(*this);
        dropped.swap(elements);
    }

  private:
    // Holds the lock. The end unlocks it, and then wakes who can go on: also if this thread leaves
    // by an exception, because it may have been woken for what it leaves to the others.
    class VEK_SCOPED_CAPABILITY Turn : public NoCopy {
      public:
        explicit Turn(BoundedQueue& owner) VEK_ACQUIRE(owner.lock) : queue(owner) {
            owner.lock.lock();
        }
        // In here the compiler doesn't know what the constructor has locked.
        ~Turn() VEK_RELEASE() VEK_NO_LOCK_ANALYSIS {
            const std::size_t now = queue.elements.size();
            queue.size.store(now, std::memory_order_relaxed);
            const bool forElement = now != 0 && queue.lock.mustWake(QueueLock::notEmpty);
            const bool forRoom = now < queue.capacity && queue.lock.mustWake(QueueLock::notFull);
            queue.lock.unlock();
            if (forElement) {
                queue.lock.wake(QueueLock::notEmpty);
            }
            if (forRoom) {
                queue.lock.wake(QueueLock::notFull);
            }
        }

      private:
        BoundedQueue& queue;
    };

    std::deque<Element> elements VEK_GUARDED_BY(lock);
    const std::size_t capacity;
    // Of `elements`. Written with the lock held, read without it by a thread that looks again.
    std::atomic<std::size_t> size = 0;
    QueueLock lock;
};

}  // namespace vek::log
