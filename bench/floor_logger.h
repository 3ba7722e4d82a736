// What a logger of this design costs at least: a statement makes a fresh text and one heap object,
// a bounded queue on a critical section and two condition variables takes it to one worker, and
// that writes and flushes one file. No loggers, levels per category, sinks or formats.
#pragma once

#include <cstddef>
#include <cstdio>
#include <deque>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

#include "vek/base/windows.h"

namespace vek_bench {

class FloorLogger {
  public:
    // Makes the file `path` anew and starts the worker.
    explicit FloorLogger(const std::string& path) : file(std::fopen(path.c_str(), "wb")) {
        InitializeCriticalSection(&section);
        worker = std::thread([this] { work(); });
    }

    ~FloorLogger() {
        finish();
        std::fclose(file);
        DeleteCriticalSection(&section);
    }
    FloorLogger(const FloorLogger&) = delete;
    FloorLogger& operator=(const FloorLogger&) = delete;

    // Whether a statement of `level` is written.
    bool passes(int level) const { return threshold >= level; }

    // Posts what `fill` writes to the stream that it is given.
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

    // Returns once everything is in the file.
    void finish() {
        if (worker.joinable()) {
            push(nullptr);
            worker.join();
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
        EnterCriticalSection(&section);
        while (queue.size() >= capacity) {
            SleepConditionVariableCS(&notFull, &section, INFINITE);
        }
        queue.push_back(std::move(message));
        WakeConditionVariable(&notEmpty);
        LeaveCriticalSection(&section);
    }

    std::unique_ptr<Message> pop() {
        EnterCriticalSection(&section);
        while (queue.empty()) {
            SleepConditionVariableCS(&notEmpty, &section, INFINITE);
        }
        std::unique_ptr<Message> message = std::move(queue.front());
        queue.pop_front();
        WakeConditionVariable(&notFull);
        LeaveCriticalSection(&section);
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
            std::fflush(file);
        }
    }

    std::FILE* const file;
    volatile int threshold = 3;
    std::deque<std::unique_ptr<Message>> queue;
    CRITICAL_SECTION section;
    CONDITION_VARIABLE notEmpty = CONDITION_VARIABLE_INIT;
    CONDITION_VARIABLE notFull = CONDITION_VARIABLE_INIT;
    std::thread worker;
};

}  // namespace vek_bench
