// The interface of a logging library that is compared with the log. Each library has one source
// file in contestants/ with a struct of these static functions, which ends in
// PEER_CONTESTANT(Struct):
//
//     static const char* name();
//     static void open(const Setup&);       // starts logging to the file
//     static void on(int i);                // a statement that is written
//     static void off(int i);               // the same statement below the threshold
//     static void close();                  // returns when every message is in the file
//
// The statement is the same for all, in the style of each library's users:
//     request {int} from {string} took {double} ms       of i, host(i) and milliseconds(i)
// and a line in the file has date, time, level, thread and text.
//
// C++14: one of the libraries doesn't compile as anything later.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace peers {

// The size of each queue. A full queue blocks its producers.
constexpr std::size_t queueCapacity = 10000;

struct Setup {
    // The path of the log file, which doesn't exist yet.
    std::string file;
    // Write to a file of openForAppending(), and not to one that the library opens in its usual
    // append mode.
    bool appending;
    // Flush the file after each message.
    bool flush;
};

// Creates the file `path` like the log's own file sink: for FILE_APPEND_DATA alone, so that the
// system puts each write at the file's end. A flush of the stream is one WriteFile. Exits with 1 if
// the file can't be created.
std::FILE* openForAppending(const std::string& path);

// The same, of the descriptor's number.
int openDescriptorForAppending(const std::string& path);

const std::string& host(int i);

inline double milliseconds(int i) {
    return (i % 1000) * 0.25;
}

struct Contestant {
    const char* (*name)();
    void (*open)(const Setup&);
    void (*close)();
    void (*runOff)(int count);
    // Logs `count` statements with the numbers from `first` on.
    void (*runOn)(int first, int count);
    // Stores the time of each statement, in ticks.
    void (*runTimed)(int count, std::uint64_t* times);
};

// Defined by PEER_CONTESTANT.
const Contestant& contestant();

// As in bench/ticks.h.
inline std::uint64_t ticks() {
    unsigned aux;
    const std::uint64_t now = __builtin_ia32_rdtscp(&aux);
    asm volatile("lfence" ::: "memory");
    return now;
}

// The measured loops, compiled in the contestant's own source file, so that its statements are
// inlined as in a user's program.
template <class Library>
struct Loops {
    static void off(int count) {
        for (int i = 0; i < count; ++i) {
            Library::off(i);
            // Keeps the compiler from moving the level test out of the loop.
            asm volatile("" ::: "memory");
        }
    }
    static void on(int first, int count) {
        for (int i = first; i < first + count; ++i) {
            Library::on(i);
        }
    }
    static void timed(int count, std::uint64_t* times) {
        for (int i = 0; i < count; ++i) {
            const std::uint64_t from = ticks();
            Library::on(i);
            times[i] = ticks() - from;
        }
    }
};

}  // namespace peers

#define PEER_CONTESTANT(Library)                                                               \
    const peers::Contestant& peers::contestant() {                                             \
        static const peers::Contestant instance = {Library::name,      Library::open,          \
                                                   Library::close,     Loops<Library>::off,    \
                                                   Loops<Library>::on, Loops<Library>::timed}; \
        return instance;                                                                       \
    }
