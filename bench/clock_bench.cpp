// clock_bench: the time to read a clock, compared with the bare system call.
#include "bench/measure.h"
#include "vek/time/clock.h"
#include "vek/time/clock_source.h"

namespace {

constexpr int rounds = 301;
constexpr int reads = 1000;

std::int64_t sink = 0;

template <class Clock>
void readClock() {
    Clock clock(false);
    for (int i = 0; i < reads; ++i) {
        clock.refresh();
        sink += clock.getValue();
    }
}

void readCounter() {
    LARGE_INTEGER ticks;
    for (int i = 0; i < reads; ++i) {
        QueryPerformanceCounter(&ticks);
        sink += ticks.QuadPart;
    }
}

void readSystemTime() {
    FILETIME now;
    for (int i = 0; i < reads; ++i) {
        GetSystemTimeAsFileTime(&now);
        sink += now.dwLowDateTime;
    }
}

void measureAll() {
    vek::time::initClocks();
    vek::time::initClockOrigin();
    using vek_bench::compare;
    compare("MonotonicClock::refresh, performance counter", rounds, reads,
            readClock<vek::time::MonotonicClock>, readCounter);
    compare("InitClock::refresh, performance counter", rounds, reads,
            readClock<vek::time::InitClock>, readCounter);
    compare("RealtimeClock::refresh, system time", rounds, reads,
            readClock<vek::time::RealtimeClock>, readSystemTime);
    vek_bench::require(sink != 0, "the clocks returned nothing but 0");
}

}  // namespace

int main(int argc, char** argv) {
    return vek_bench::runBenchmark(
        argc, argv,
        "clock_bench [--smoke] [--json]\n"
        "\n"
        "The time to read a clock, compared with the bare system call.\n",
        measureAll);
}
