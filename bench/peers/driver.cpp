// The main() of each contestant: takes one measurement of the logging library that it is linked
// with, in a process of its own, because most libraries can't be started twice.
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <io.h>

#include "bench/measure.h"
#include "bench/peers/contestant.h"
#include "bench/ticks.h"
#include "vek/base/windows.h"

namespace peers {

int openDescriptorForAppending(const std::string& path) {
    const HANDLE handle = CreateFileA(path.c_str(), FILE_APPEND_DATA,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        std::fprintf(stderr, "can't create %s, error %lu\n", path.c_str(), GetLastError());
        std::exit(1);
    }
    // Without O_APPEND: the runtime would seek to the end before each write.
    return _open_osfhandle(reinterpret_cast<std::intptr_t>(handle), _O_BINARY);
}

std::FILE* openForAppending(const std::string& path) {
    return _fdopen(openDescriptorForAppending(path), "wb");
}

const std::string& host(int i) {
    static const std::string hosts[] = {"alpha", "beta.example", "gamma", "delta.internal"};
    return hosts[i & 3];
}

}  // namespace peers

namespace {

using peers::contestant;
using vek_bench::repetitions;
using vek_bench::report;

constexpr int burstSize = 20;
constexpr DWORD pauseMs = 2;
constexpr int warmUp = 200;
// Of the throughput: until the queue is full, and then what is measured.
constexpr int fillMs = 100;
constexpr int windowMs = 200;

struct Request {
    std::string mode = "throughput";
    int threads = 1;
    peers::Setup setup = {"", false, true};
};

Request parseRequest(const std::vector<std::string>& arguments) {
    Request request;
    for (const std::string& argument : arguments) {
        if (argument == "off" || argument == "statement" || argument == "throughput") {
            request.mode = argument;
        } else if (argument == "appending") {
            request.setup.appending = true;
        } else if (argument == "unflushed") {
            request.setup.flush = false;
        } else if (const int threads = std::atoi(argument.c_str()); threads > 0 && threads <= 64) {
            request.threads = threads;
        } else {
            throw std::runtime_error("unknown argument '" + argument + "'; see --help");
        }
    }
    return request;
}

// A path for a log file of this process, which doesn't exist yet.
std::string logFilePath() {
    char directory[MAX_PATH] = {};
    GetTempPathA(sizeof directory, directory);
    return directory + std::string("peer-") + std::to_string(GetCurrentProcessId()) + ".log";
}

// Calls `body(thread)` in `count` threads, all released together, and `meanwhile()` in this one.
// Returns once all have returned.
template <class Body, class Meanwhile>
void onThreads(int count, Body body, Meanwhile meanwhile) {
    const HANDLE released = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    std::atomic<int> ready = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&, i] {
            ++ready;
            WaitForSingleObject(released, INFINITE);
            body(i);
        });
    }
    while (ready != count) {
        Sleep(1);
    }
    SetEvent(released);
    meanwhile();
    for (std::thread& thread : threads) {
        thread.join();
    }
    CloseHandle(released);
}

// The content of the file.
std::string contentOf(const std::string& path) {
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    vek_bench::require(file != nullptr, "there is no log file " + path);
    std::string text;
    std::vector<char> buffer(1 << 16);
    while (const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), file)) {
        text.append(buffer.data(), size);
    }
    std::fclose(file);
    return text;
}

// How many statements begin in `text` from `from` up to `to`. A library may write lines of its own.
int statementsIn(const std::string& text, std::size_t from = 0,
                 std::size_t to = std::string::npos) {
    int count = 0;
    for (std::size_t at = from; (at = text.find("request ", at)) < to; ++at) {
        ++count;
    }
    return count;
}

// Each returns the number of messages that it has logged. All are in the file at return.
int measureOff() {
    constexpr int trial = 100'000;
    constexpr double roundLimit = 2e8;
    const auto timeOf = [](int statements) {
        return vek_bench::nanoseconds([&] { contestant().runOff(statements); }) / statements;
    };
    // Libraries that look the level up anew take 100 times as long as the others.
    const double fitting = roundLimit / std::max(timeOf(trial), 0.1);
    const int statements = repetitions(static_cast<int>(std::min(fitting, 20e6)), trial);
    std::vector<double> times;
    for (int round = repetitions(5); round > 0; --round) {
        times.push_back(timeOf(statements));
    }
    // One line, to see that the statements were off and the logger was on.
    contestant().runOn(0, 1);
    contestant().close();
    report({.name = "off", .own = vek_bench::median(times)});
    return 1;
}

void reportTimes(std::vector<std::uint64_t>& times, double perTick) {
    std::sort(times.begin(), times.end());
    double sum = 0;
    for (const std::uint64_t time : times) {
        sum += static_cast<double>(time) * perTick;
    }
    report({.name = "mean", .own = sum / static_cast<double>(times.size())});
    const char* const percents[] = {"1",  "5",  "10", "20", "30", "40",   "50",   "60",   "70",
                                    "80", "90", "95", "98", "99", "99.5", "99.8", "99.9", "99.95"};
    for (const char* const percent : percents) {
        const auto at =
            static_cast<std::size_t>(std::atof(percent) / 100 * static_cast<double>(times.size()));
        report({.name = std::string("p") + percent,
                .own = static_cast<double>(times[std::min(at, times.size() - 1)]) * perTick});
    }
    report({.name = "max", .own = static_cast<double>(times.back()) * perTick});
}

// The time inside one statement. Each thread logs bursts with pauses in between: the worker often
// sleeps, and the queue isn't full.
int measureStatement(int threads) {
    const double perTick = vek_bench::nanosecondsPerTick();
    const int bursts = repetitions(1000, 10);
    const int each = burstSize * bursts;
    std::vector<std::uint64_t> times(static_cast<std::size_t>(each * threads));
    const auto burstsOf = [&](int thread) {
        std::uint64_t* out = times.data() + thread * each;
        contestant().runOn(0, warmUp);
        for (int burst = 0; burst < bursts; ++burst, out += burstSize) {
            Sleep(pauseMs);
            contestant().runTimed(burstSize, out);
        }
    };
    onThreads(threads, burstsOf, [] {});
    contestant().close();
    reportTimes(times, perTick);
    return (each + warmUp) * threads;
}

// The size of the file; 0 if there is none.
std::uint64_t sizeOf(const std::string& path) {
    // By a handle: the directory's entry of an open file may be older.
    const HANDLE file = CreateFileA(path.c_str(), FILE_READ_ATTRIBUTES,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return 0;
    }
    LARGE_INTEGER size = {};
    GetFileSizeEx(file, &size);
    CloseHandle(file);
    return static_cast<std::uint64_t>(size.QuadPart);
}

// The size of the file after `ms` milliseconds, and not before it is above `least`, which takes
// longer on a machine that has much else to do. Gives up after half a minute.
std::uint64_t sizeAfter(int ms, const std::string& path, std::uint64_t least) {
    Sleep(static_cast<DWORD>(ms));
    std::uint64_t size = sizeOf(path);
    for (int tries = 30'000; size <= least && tries > 0; --tries) {
        Sleep(1);
        size = sizeOf(path);
    }
    return size;
}

// How many lines come into the file while the threads log as fast as they can. What happens ahead
// of that, until the queue is full, and afterwards, until it is empty, doesn't count, so a short
// window gives the rate of a long run.
int measureThroughput(int threads, const std::string& path) {
    // Statements between two looks at `over`.
    constexpr int portion = 50;
    std::atomic<bool> over = false;
    std::atomic<int> sent = 0;
    std::uint64_t from = 0;
    std::uint64_t to = 0;
    double time = 0;
    const auto logUntilOver = [&](int) {
        int logged = 0;
        for (; !over; logged += portion) {
            contestant().runOn(logged, portion);
        }
        sent += logged;
    };
    onThreads(threads, logUntilOver, [&] {
        from = sizeAfter(fillMs, path, 0);
        time =
            vek_bench::nanoseconds([&] { to = sizeAfter(repetitions(windowMs, 20), path, from); });
        over = true;
    });
    contestant().close();
    vek_bench::require(to > from, "no message came into the file in the window");
    const int lines =
        statementsIn(contentOf(path), static_cast<std::size_t>(from), static_cast<std::size_t>(to));
    report({.name = "throughput",
            .own = lines / time * 1e9,
            .unit = "messages/s",
            .higherIsBetter = true});
    return sent;
}

void measureAll() {
    Request request = parseRequest(vek_bench::options.arguments);
    request.setup.file = logFilePath();
    // An earlier process of the same number may have left one.
    DeleteFileA(request.setup.file.c_str());
    contestant().open(request.setup);
    const int sent = request.mode == "off" ? measureOff()
                     : request.mode == "statement"
                         ? measureStatement(request.threads)
                         : measureThroughput(request.threads, request.setup.file);
    const int found = statementsIn(contentOf(request.setup.file));
    DeleteFileA(request.setup.file.c_str());
    vek_bench::require(found == sent, std::string(contestant().name()) + ": " +
                                          std::to_string(found) + " of " + std::to_string(sent) +
                                          " messages are in the file");
}

}  // namespace

int main(int argc, char** argv) {
    const int code = vek_bench::runBenchmark(
        argc, argv,
        "peer_NAME [--smoke] [--json] [off | statement | throughput] [THREADS] [appending] "
        "[unflushed]\n"
        "\n"
        "Takes one measurement of one logging library:\n"
        "  off         the time of a statement below the threshold\n"
        "  statement   the distribution of the time inside a statement, in bursts of 20\n"
        "  throughput  messages a second that come into the file while the threads log (default)\n"
        "  THREADS     how many threads log (default 1)\n"
        "  appending   the file is opened for FILE_APPEND_DATA, as the log's own file sink does\n"
        "  unflushed   the file isn't flushed after each message\n",
        measureAll, 4);
    // Not every library survives its own static destruction; the work is done.
    std::fflush(stdout);
    std::_Exit(code);
}
