// The simplest logger of this design: a statement builds a fresh text and one heap object, a
// bounded queue passes it to one worker, and the worker writes one file. No named loggers, no
// levels per logger, no sinks, no formats: the lower limit that the log's own cost is compared
// with.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdio>
#include <deque>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

#include "vek/base/windows.h"

namespace vek_bench {

// A critical section and two condition variables of the system.
class SystemLock {
  public:
    SystemLock() { InitializeCriticalSection(&section); }
    ~SystemLock() { DeleteCriticalSection(&section); }
    SystemLock(const SystemLock&) = delete;
    SystemLock& operator=(const SystemLock&) = delete;

    void lock() { EnterCriticalSection(&section); }
    void unlock() { LeaveCriticalSection(&section); }
    void waitNotEmpty() { SleepConditionVariableCS(&notEmpty, &section, INFINITE); }
    void waitNotFull() { SleepConditionVariableCS(&notFull, &section, INFINITE); }
    void wakeNotEmpty() { WakeConditionVariable(&notEmpty); }
    void wakeNotFull() { WakeConditionVariable(&notFull); }

  private:
    CRITICAL_SECTION section;
    CONDITION_VARIABLE notEmpty = CONDITION_VARIABLE_INIT;
    CONDITION_VARIABLE notFull = CONDITION_VARIABLE_INIT;
};

// A mutex and two condition variables of the C++ runtime.
class RuntimeLock {
  public:
    void lock() { mutex.lock(); }
    void unlock() { mutex.unlock(); }
    void waitNotEmpty() { notEmpty.wait(mutex); }
    void waitNotFull() { notFull.wait(mutex); }
    void wakeNotEmpty() { notEmpty.notify_one(); }
    void wakeNotFull() { notFull.notify_one(); }

  private:
    std::mutex mutex;
    std::condition_variable_any notEmpty;
    std::condition_variable_any notFull;
};

template <class Lock>
class BasicFloorLogger {
  public:
    // Starts the worker, which writes to `target` and, with `flushEach`, flushes it after each
    // message. Owns `target`.
    explicit BasicFloorLogger(std::FILE* target, bool flushEach = true)
        : file(target), flush(flushEach) {
        worker = std::thread([this] { work(); });
    }
    // Creates the file `path`.
    explicit BasicFloorLogger(const std::string& path)
        : BasicFloorLogger(std::fopen(path.c_str(), "wb")) {}

    ~BasicFloorLogger() { finish(); }
    BasicFloorLogger(const BasicFloorLogger&) = delete;
    BasicFloorLogger& operator=(const BasicFloorLogger&) = delete;

    // Whether a statement of `level` is written.
    bool passes(int level) const { return threshold >= level; }

    // Posts the text that `fill` writes to its argument, a std::ostream. Blocks while the queue is
    // full.
    template <class Fill>
    void post(Fill fill) {
        std::ostringstream out;
        fill(out);
        auto message = std::make_unique<Message>();
        message->thread = GetCurrentThreadId();
        GetSystemTimeAsFileTime(&message->time);
        message->text = out.str();
        push(std::move(message));
    }

    // Blocks until everything is in the file, and closes it.
    void finish() {
        if (worker.joinable()) {
            push(nullptr);
            worker.join();
            std::fclose(file);
        }
    }

  private:
    struct Message {
        DWORD thread;
        FILETIME time;
        std::string text;
    };

    static constexpr std::size_t capacity = 10000;

    void push(std::unique_ptr<Message> message) {
        const std::lock_guard<Lock> guard(lock);
        while (queue.size() >= capacity) {
            lock.waitNotFull();
        }
        queue.push_back(std::move(message));
        lock.wakeNotEmpty();
    }

    std::unique_ptr<Message> pop() {
        const std::lock_guard<Lock> guard(lock);
        while (queue.empty()) {
            lock.waitNotEmpty();
        }
        std::unique_ptr<Message> message = std::move(queue.front());
        queue.pop_front();
        lock.wakeNotFull();
        return message;
    }

    void work() {
        while (const std::unique_ptr<Message> message = pop()) {
            FILETIME local;
            SYSTEMTIME at;
            FileTimeToLocalFileTime(&message->time, &local);
            FileTimeToSystemTime(&local, &at);
            std::fprintf(file, "%04d-%02d-%02d %02d:%02d:%02d [ INFO] %lu %s\r\n", at.wYear,
                         at.wMonth, at.wDay, at.wHour, at.wMinute, at.wSecond, message->thread,
                         message->text.c_str());
            if (flush) {
                std::fflush(file);
            }
        }
    }

    std::FILE* const file;
    const bool flush;
    volatile int threshold = 3;
    std::deque<std::unique_ptr<Message>> queue;
    Lock lock;
    std::thread worker;
};

using FloorLogger = BasicFloorLogger<SystemLock>;

}  // namespace vek_bench
