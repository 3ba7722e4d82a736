// log_bench: a logging statement and the way of its message to the file, compared with the simplest
// logger of the same design and with bare system calls: statements that are off, statements that
// are on, and messages written to a file that is flushed after each of them.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/floor_logger.h"
#include "bench/measure.h"
#include "bench/ticks.h"
#include "vek/base/windows.h"
#include "vek/log/manager.h"
#include "vek/log/sinks/file_sink.h"
#include "vek/log/sinks/message_format.h"
#include "vek/log/statement.h"
#include "vek/time/clock_source.h"

namespace {

constexpr int rounds = 7;
constexpr int burstSize = 20;
constexpr DWORD pauseMs = 2;

int statementsOff() {
    return vek_bench::repetitions(20'000'000, 200'000);
}

int bursts() {
    return vek_bench::repetitions(400, 5);
}

int throughputMessages() {
    return vek_bench::repetitions(100'000, 2'000);
}

// --- the contestants ---

const std::string& host(int i) {
    static const std::string hosts[] = {"alpha", "beta.example", "gamma", "delta.internal"};
    return hosts[i & 3];
}

double milliseconds(int i) {
    return (i % 1000) * 0.25;
}

// Keeps the compiler from moving the level test out of a loop.
void compilerBarrier() {
    asm volatile("" ::: "memory");
}

class OwnLogger {
  public:
    static constexpr char name[] = "own";

    explicit OwnLogger(const std::string& path) : logger(*manager.getLogger("bench")) {
        vek::log::FileSinkConfig config;
        config.path = path;
        config.enabled = true;
        config.compress_archives = false;
        config.format = vek::log::compileFormat("{date} [{level}] {tid} {msg}");
        manager.addSink(new vek::log::FileSink(config));
        manager.start();
    }
    void on(int i) {
        VEK_LOG(logger, vek::log::INFO,
                "request " << i << " from " << host(i) << " took " << milliseconds(i) << " ms");
    }
    void off(int count) {
        vek::log::Logger& log = logger;
        for (int i = 0; i < count; ++i) {
            VEK_LOG(log, vek::log::DEBUG,
                    "request " << i << " from " << host(i) << " took " << milliseconds(i) << " ms");
            compilerBarrier();
        }
    }
    void finish() { manager.shutdown(); }

  private:
    vek::log::Manager manager;
    vek::log::Logger& logger;
};

class Floor {
  public:
    static constexpr char name[] = "floor";

    explicit Floor(const std::string& path) : logger(path) {}
    void on(int i) {
        if (logger.passes(vek::log::INFO)) {
            logger.post([i](std::ostream& out) {
                out << "request " << i << " from " << host(i) << " took " << milliseconds(i)
                    << " ms";
            });
        }
    }
    void off(int count) {
        for (int i = 0; i < count; ++i) {
            if (logger.passes(vek::log::DEBUG)) {
                logger.post([i](std::ostream& out) {
                    out << "request " << i << " from " << host(i) << " took " << milliseconds(i)
                        << " ms";
                });
            }
            compilerBarrier();
        }
    }
    void finish() { logger.finish(); }

  private:
    vek_bench::FloorLogger logger;
};

// --- measuring ---

// A temporary file. The destructor deletes it.
class LogFile {
  public:
    LogFile() {
        char directory[MAX_PATH] = {};
        char file[MAX_PATH] = {};
        GetTempPathA(sizeof directory, directory);
        GetTempFileNameA(directory, "vek", 0, file);
        path = file;
    }
    ~LogFile() { DeleteFileA(path.c_str()); }
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    int lines() const {
        int count = 0;
        std::FILE* const file = std::fopen(path.c_str(), "rb");
        for (int c = 0; file != nullptr && (c = std::fgetc(file)) != EOF;) {
            count += c == '\n' ? 1 : 0;
        }
        if (file != nullptr) {
            std::fclose(file);
        }
        return count;
    }

    std::string path;
};

void checkLines(const char* who, const LogFile& file, int sent) {
    const int lines = file.lines();
    vek_bench::require(lines == sent, std::string(who) + ": " + std::to_string(lines) + " of " +
                                          std::to_string(sent) + " messages are in the file");
}

template <class Body>
void onThreads(int count, Body body) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back(body, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

template <class Contestant>
double statementOff() {
    const LogFile file;
    Contestant contestant(file.path);
    return vek_bench::nanoseconds([&] { contestant.off(statementsOff()); }) / statementsOff();
}

struct Latency {
    std::vector<double> p50;
    std::vector<double> p99;
};

// The time inside one statement, for threads that log bursts with pauses between them, so that the
// worker is often asleep.
template <class Contestant>
void statementOn(int producers, double perTick, Latency& latency) {
    const LogFile file;
    Contestant contestant(file.path);
    const auto perProducer =
        static_cast<std::size_t>(burstSize) * static_cast<std::size_t>(bursts());
    std::vector<std::uint64_t> times(perProducer * static_cast<std::size_t>(producers));
    onThreads(producers, [&](int producer) {
        std::uint64_t* out = times.data() + static_cast<std::size_t>(producer) * perProducer;
        for (int burst = 0; burst < bursts(); ++burst) {
            Sleep(pauseMs);
            for (int i = 0; i < burstSize; ++i) {
                const std::uint64_t from = vek_bench::ticks();
                contestant.on(i);
                *out++ = vek_bench::ticks() - from;
            }
        }
    });
    contestant.finish();
    checkLines(Contestant::name, file, static_cast<int>(times.size()));
    std::sort(times.begin(), times.end());
    latency.p50.push_back(static_cast<double>(times[times.size() / 2]) * perTick);
    latency.p99.push_back(static_cast<double>(times[times.size() / 100 * 99]) * perTick);
}

// Nanoseconds for each message, from the first statement to the last line in the file.
template <class Contestant>
double throughput(int producers) {
    const LogFile file;
    Contestant contestant(file.path);
    const int each = throughputMessages() / producers;
    const double total = vek_bench::nanoseconds([&] {
        onThreads(producers, [&](int) {
            for (int i = 0; i < each; ++i) {
                contestant.on(i);
            }
        });
        contestant.finish();
    });
    checkLines(Contestant::name, file, each * producers);
    return total / (each * producers);
}

// The same lines, written by one thread with nothing but WriteFile.
double bareWrites() {
    const LogFile file;
    const HANDLE handle = CreateFileA(file.path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                      CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    const std::string line =
        "2024-02-29 13:05:09 [ INFO] 1234 request 12345 from beta.example took 123.25 ms\r\n";
    const double total = vek_bench::nanoseconds([&] {
        for (int i = 0; i < throughputMessages(); ++i) {
            DWORD written = 0;
            WriteFile(handle, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
        }
    });
    CloseHandle(handle);
    return total / throughputMessages();
}

double emptyLoop() {
    return vek_bench::nanoseconds([] {
               for (int i = 0; i < statementsOff(); ++i) {
                   compilerBarrier();
               }
           }) /
           statementsOff();
}

void row(const std::string& what, const std::vector<double>& own, const std::vector<double>& floor,
         double target) {
    vek_bench::report({.name = what,
                       .own = vek_bench::median(own),
                       .other = vek_bench::median(floor),
                       .target = target,
                       .otherName = "floor"});
}

std::string threadsText(int producers) {
    return producers == 1 ? "1 thread" : std::to_string(producers) + " threads";
}

void measureOff() {
    std::vector<double> own;
    std::vector<double> floor;
    std::vector<double> empty;
    for (int round = vek_bench::repetitions(rounds); round > 0; --round) {
        own.push_back(statementOff<OwnLogger>());
        floor.push_back(statementOff<Floor>());
        empty.push_back(emptyLoop());
    }
    row("statement that is off", own, floor, 1.3);
    vek_bench::report({.name = "an empty loop", .own = vek_bench::median(empty)});
}

void measureOn(int producers, double perTick) {
    Latency own;
    Latency floor;
    for (int round = vek_bench::repetitions(rounds); round > 0; --round) {
        statementOn<OwnLogger>(producers, perTick, own);
        statementOn<Floor>(producers, perTick, floor);
    }
    const std::string what = "statement that is on, " + threadsText(producers) + ", ";
    row(what + "p50", own.p50, floor.p50, 0.9);
    row(what + "p99", own.p99, floor.p99, 1.2);
}

void measureThroughput(int producers, std::vector<double>& bare) {
    std::vector<double> own;
    std::vector<double> floor;
    for (int round = vek_bench::repetitions(rounds); round > 0; --round) {
        own.push_back(throughput<OwnLogger>(producers));
        floor.push_back(throughput<Floor>(producers));
        bare.push_back(bareWrites());
    }
    row("message in the flushed file, " + threadsText(producers), own, floor, 1.0);
}

void measureAll() {
    vek::time::initClocks();
    const double perTick = vek_bench::nanosecondsPerTick();
    measureOff();
    for (const int producers : {1, 4}) {
        measureOn(producers, perTick);
    }
    std::vector<double> bare;
    for (const int producers : {1, 4, 8}) {
        measureThroughput(producers, bare);
    }
    vek_bench::report({.name = "a bare WriteFile of the line", .own = vek_bench::median(bare)});
}

}  // namespace

int main(int argc, char** argv) {
    return vek_bench::runBenchmark(argc, argv,
                                   "log_bench [--smoke] [--json]\n"
                                   "\n"
                                   "Logging statements and the way of their messages to the file,\n"
                                   "compared with the simplest logger of the same design.\n",
                                   measureAll);
}
