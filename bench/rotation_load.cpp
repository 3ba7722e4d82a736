// rotation_load.exe GZIP_FOLDER: 4 threads log 200000 messages into a file that is rotated, its
// archives compressed by the gzip of GZIP_FOLDER, at least 20 times. Every message has to be found
// exactly once, in order for each thread, across the log file and its archives. Tells the rate
// beside that of the same load without rotation, of the least logger of the same design, and of
// bare writes of the same lines. Ends with 1 if a line is missing, doubled or out of order.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/floor_logger.h"
#include "bench/measure.h"
#include "tests/support/gzip/gzip_file.h"
#include "vek/base/environment.h"
#include "vek/base/windows.h"
#include "vek/log/manager.h"
#include "vek/log/sinks/archives.h"
#include "vek/log/sinks/file_sink.h"
#include "vek/log/sinks/message_format.h"
#include "vek/log/statement.h"
#include "vek/pal.h"

namespace {

constexpr int producers = 4;
constexpr int messagesEach = 50'000;
constexpr int messages = producers * messagesEach;
constexpr std::uint64_t rotateSizeKib = 512;
constexpr unsigned leastArchives = 20;
constexpr int maxArchives = 1000;
constexpr int rounds = 3;

// A folder for log files, gone at the end of the scope.
class Folder {
  public:
    Folder() {
        char directory[MAX_PATH] = {};
        GetTempPathA(sizeof directory, directory);
        path = directory + std::string("vek-load-") + std::to_string(GetCurrentProcessId());
        CreateDirectoryA(path.c_str(), nullptr);
    }
    ~Folder() {
        for (unsigned n = 1; n <= maxArchives; ++n) {
            DeleteFileA(vek::log::archiveName(logFile(), n, true).c_str());
            DeleteFileA(vek::log::archiveName(logFile(), n, false).c_str());
        }
        DeleteFileA(logFile().c_str());
        RemoveDirectoryA(path.c_str());
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string logFile() const { return path + "\\x.log"; }

  private:
    std::string path;
};

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

template <class Log>
void onFourThreads(Log log) {
    std::vector<std::thread> threads;
    for (int producer = 0; producer < producers; ++producer) {
        threads.emplace_back([&log, producer] {
            for (int i = 0; i < messagesEach; ++i) {
                log(producer, i);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// Nanoseconds for the whole load.
double ownLogger(const std::string& path, bool rotate) {
    vek::log::FileSinkConfig config(path);
    config.enabled = true;
    config.rotate = rotate;
    config.rotate_size = rotateSizeKib;
    config.max_archives = maxArchives;
    config.format = vek::log::compileFormat("{date} [{level}] {tid} {msg}");
    vek::log::Manager manager;
    manager.addSink(new vek::log::FileSink(config));
    manager.start();
    vek::log::Logger& logger = *manager.getLogger("load");
    return vek_bench::nanoseconds([&] {
        onFourThreads([&](int producer, int i) {
            VEK_LOG(logger, vek::log::INFO,
                    "producer " << producer << " message " << i << " of a load of many messages");
        });
        manager.shutdown();
    });
}

double floorLogger(const std::string& path) {
    vek_bench::FloorLogger logger(path);
    return vek_bench::nanoseconds([&] {
        onFourThreads([&](int producer, int i) {
            logger.post([&](std::ostream& out) {
                out << "producer " << producer << " message " << i << " of a load of many messages";
            });
        });
        logger.finish();
    });
}

double bareWrites(const std::string& path, DWORD access) {
    const HANDLE file = CreateFileA(path.c_str(), access, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    const std::string line =
        "2024-02-29 13:05:09 [ INFO] 1234 producer 1 message 12345 of a load of many messages\r\n";
    const double total = vek_bench::nanoseconds([&] {
        for (int i = 0; i < messages; ++i) {
            DWORD written = 0;
            WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
        }
    });
    CloseHandle(file);
    return total;
}

// All lines, from the oldest archive to the log file. Throws if an archive can't be read.
std::string allLines(const Folder& folder, unsigned& archives) {
    archives = 0;
    while (
        GetFileAttributesA(vek::log::archiveName(folder.logFile(), archives + 1, true).c_str()) !=
        INVALID_FILE_ATTRIBUTES) {
        ++archives;
    }
    std::string text;
    for (unsigned n = archives; n > 0; --n) {
        text += support::gunzip(vek::log::archiveName(folder.logFile(), n, true));
    }
    return text + contentOf(folder.logFile());
}

void check(bool condition, const std::string& what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}

// Every message is there once, and each thread's messages are in order.
void checkLines(const std::string& text) {
    int next[producers] = {};
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        int producer = -1;
        int number = -1;
        const std::size_t at = line.find("producer ");
        check(
            at != std::string::npos &&
                std::sscanf(line.c_str() + at, "producer %d message %d", &producer, &number) == 2 &&
                producer >= 0 && producer < producers,
            "a line that nobody wrote: " + line);
        check(number == next[producer], "message " + std::to_string(next[producer]) +
                                            " of producer " + std::to_string(producer) +
                                            " is missing or out of order");
        ++next[producer];
    }
    for (const int count : next) {
        check(count == messagesEach, "the last messages of a producer are missing");
    }
}

void tell(const char* what, const std::vector<double>& times, double reference) {
    const double time = vek_bench::median(times);
    std::printf("%-36s %9.0f messages/s   %5.2f of the floor's\n", what, messages / time * 1e9,
                reference / time);
}

int run() {
    std::vector<double> rotated;
    std::vector<double> plain;
    std::vector<double> floor;
    std::vector<double> bare;
    std::vector<double> appended;
    unsigned archives = 0;
    for (int round = 0; round < rounds; ++round) {
        {
            const Folder folder;
            rotated.push_back(ownLogger(folder.logFile(), true));
            checkLines(allLines(folder, archives));
            check(archives >= leastArchives, "only " + std::to_string(archives) + " archives");
        }
        {
            const Folder folder;
            plain.push_back(ownLogger(folder.logFile(), false));
            checkLines(contentOf(folder.logFile()));
        }
        const Folder folder;
        floor.push_back(floorLogger(folder.logFile()));
        checkLines(contentOf(folder.logFile()));
        bare.push_back(bareWrites(folder.logFile(), GENERIC_WRITE));
        appended.push_back(bareWrites(folder.logFile(), FILE_APPEND_DATA));
    }
    const double reference = vek_bench::median(floor);
    std::printf("%d messages of %d threads, every line found once and in order:\n", messages,
                producers);
    tell("with rotation and compression", rotated, reference);
    std::printf("  %u archives\n", archives);
    tell("without rotation (at least 1.0)", plain, reference);
    tell("the least logger of this design", floor, reference);
    tell("bare appends of one thread", appended, reference);
    tell("bare writes of one thread", bare, reference);
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: rotation_load GZIP_FOLDER\n");
        return 2;
    }
    try {
        const vek::VekPal pal(false, 0, 0, nullptr);
        vek::setEnv("PATH", arguments[1]);
        return run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
