// soak_logger DIRECTORY THREADS MESSAGES PACE: a process that logs, for tests/soak. Its settings
// are in logging.conf beside it; its name is "soak". THREADS threads log, each until there is a
// file DIRECTORY\stop. The text of a message begins with "THREAD NUMBER ", and the numbers of a
// thread begin with 0. After each message a thread sleeps PACE milliseconds, unless that is 0.
//
// If MESSAGES isn't 0 it works in rounds of so many messages of each thread. After each round the
// threads pause, and it prints "round N". It goes on when there is a file go-N, or ends when there
// is stop. If measure-N is there it first waits until the queue is empty and all clients have gone,
// and prints what it has in use: "use HANDLES HEAP_BYTES PRIVATE_BYTES".
#include <barrier>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

// Needs the other ahead of it.
// clang-format off
#include "vek/base/windows.h"
#include <psapi.h>
// clang-format on
#include "tests/support/files.h"
#include "tests/support/heap_use.h"
#include "tests/support/open_handles.h"
#include "vek/base/environment.h"
#include "vek/log/configurator.h"
#include "vek/log/manager.h"
#include "vek/log/statement.h"
#include "vek/pal.h"

namespace {

using vek::log::Manager;

constexpr DWORD lookMs = 20;

class LoggingProcess {
  public:
    LoggingProcess(std::string ownDirectory, unsigned threadCount, unsigned long countOfEach,
                   DWORD paceMs)
        : directory(std::move(ownDirectory)),
          threads(threadCount),
          messages(countOfEach),
          pace(paceMs),
          meeting(static_cast<std::ptrdiff_t>(threadCount) + 1) {}

    void run() {
        std::vector<std::jthread> running;
        for (unsigned number = 0; number < threads; ++number) {
            running.emplace_back([this, number] { log(number); });
        }
        for (int round = 1; messages != 0 && !ended; ++round) {
            meeting.arrive_and_wait();
            finishRound(std::to_string(round));
            meeting.arrive_and_wait();
        }
    }

  private:
    void log(unsigned number) {
        // Half of the threads share a logger.
        vek::log::Logger& logger = *Manager::instance().getLogger(
            number % 2 == 0 ? "shared" : "own" + std::to_string(number));
        for (unsigned long i = 0; messages != 0 || !isThere("stop"); ++i) {
            if (messages != 0 && i != 0 && i % messages == 0) {
                meeting.arrive_and_wait();
                meeting.arrive_and_wait();
                if (ended) {
                    return;
                }
            }
            VEK_LOG(logger, vek::log::INFO, number << ' ' << i << " a line of ordinary length");
            if (pace != 0) {
                Sleep(pace);
            }
        }
    }

    // All threads wait at the meeting meanwhile.
    void finishRound(const std::string& round) {
        std::cout << "round " << round << std::endl;
        bool measured = false;
        while (!isThere("go-" + round) && !ended) {
            if (!measured && isThere("measure-" + round)) {
                measured = true;
                printUse();
            }
            Sleep(lookMs);
            ended = isThere("stop");
        }
    }

    bool isThere(const std::string& name) const { return support::exists(directory + "\\" + name); }

    static std::size_t sinkCount() {
        std::size_t count = 0;
        Manager::instance().withSinks(
            [&](const auto& sinks, std::uint32_t) { count = sinks.size(); });
        return count;
    }

    // False while the file is rotated.
    bool endsWith(const std::string& line) const {
        std::ifstream file(directory + "\\soak.log", std::ios::binary);
        file.seekg(-static_cast<std::streamoff>(line.size()), std::ios::end);
        std::string end(line.size(), ' ');
        return file.read(end.data(), static_cast<std::streamsize>(end.size())) && end == line;
    }

    // A client that has gone is noticed at the next messages, so some are logged meanwhile.
    void printUse() {
        vek::log::Logger& logger = *Manager::instance().getLogger("shared");
        // Once the latest message is in the file, the queue is empty. If that was the last one of
        // an archive, the next one is.
        for (int number = 1;; ++number) {
            const std::string text = "pause " + std::to_string(number);
            VEK_LOG(logger, vek::log::INFO, text);
            Sleep(lookMs);
            if (endsWith(text + "\r\n") && sinkCount() == 1) {
                break;
            }
        }
        PROCESS_MEMORY_COUNTERS memory = {};
        GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
        std::cout << "use " << support::openHandles().size() << ' ' << support::heapUse().bytes
                  << ' ' << memory.PagefileUsage << std::endl;
    }

    const std::string directory;
    const unsigned threads;
    const unsigned long messages;
    const DWORD pace;
    std::barrier<> meeting;
    bool ended = false;  // changes only while the threads wait
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::cerr << "usage: soak_logger DIRECTORY THREADS MESSAGES PACE\n";
        return 2;
    }
    // gzip.exe is beside it.
    vek::setEnv("PATH", argv[1]);
    const vek::VekPal pal(false, 0, 4, nullptr);
    vek::log::Configurator configurator(nullptr);
    configurator.configure("soak");
    LoggingProcess(argv[1], static_cast<unsigned>(std::atoi(argv[2])),
                   std::strtoul(argv[3], nullptr, 10), static_cast<DWORD>(std::atoi(argv[4])))
        .run();
    std::cout << "logged" << std::endl;
}
