// rotation_load: 4 threads log 200000 messages into a file that is rotated, its archives compressed
// by a real gzip, at least 20 times. Fails unless every message is found exactly once, in order for
// each thread, across the log file and its archives. Reports the rate of that, of the same load
// without rotation, and of bare writes of the same lines, each compared with the simplest logger of
// the same design.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
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

using vek_bench::require;

constexpr int producers = 4;
constexpr int maxArchives = 1000;
constexpr int rounds = 3;

int messagesEach() {
    return vek_bench::repetitions(50'000, 250);
}

int messages() {
    return producers * messagesEach();
}

std::uint64_t rotateSizeKib() {
    return vek_bench::options.smoke ? 32 : 512;
}

unsigned leastArchives() {
    return vek_bench::options.smoke ? 2 : 20;
}

// A temporary folder for log files. The destructor deletes it.
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
            for (int i = 0; i < messagesEach(); ++i) {
                log(producer, i);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// Returns the nanoseconds of the whole load.
double ownLogger(const std::string& path, bool rotate) {
    vek::log::FileSinkConfig config(path);
    config.enabled = true;
    config.rotate = rotate;
    config.rotate_size = rotateSizeKib();
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
        for (int i = 0; i < messages(); ++i) {
            DWORD written = 0;
            WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
        }
    });
    CloseHandle(file);
    return total;
}

bool exists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// All lines, from the oldest archive to the log file. Throws if there are too few archives, or one
// isn't compressed or can't be read.
std::string allLines(const Folder& folder, unsigned& archives) {
    archives = 0;
    while (exists(vek::log::archiveName(folder.logFile(), archives + 1, true))) {
        ++archives;
    }
    require(!exists(vek::log::archiveName(folder.logFile(), archives + 1, false)),
            "archive " + std::to_string(archives + 1) + " isn't compressed: the rotation failed");
    require(archives >= leastArchives(),
            "only " + std::to_string(archives) + " archives, expected at least " +
                std::to_string(leastArchives()) + ": the rotation failed");
    std::string text;
    for (unsigned n = archives; n > 0; --n) {
        text += support::gunzip(vek::log::archiveName(folder.logFile(), n, true));
    }
    return text + contentOf(folder.logFile());
}

// Throws unless every message is there once, and those of each thread are in order.
void checkLines(const std::string& text) {
    int next[producers] = {};
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        int producer = -1;
        int number = -1;
        const std::size_t at = line.find("producer ");
        require(
            at != std::string::npos &&
                std::sscanf(line.c_str() + at, "producer %d message %d", &producer, &number) == 2 &&
                producer >= 0 && producer < producers,
            "unexpected line: " + line);
        require(number == next[producer], "message " + std::to_string(next[producer]) +
                                              " of producer " + std::to_string(producer) +
                                              " is missing or out of order");
        ++next[producer];
    }
    for (const int count : next) {
        require(count == messagesEach(), "the last messages of a producer are missing");
    }
}

// `reference` is the time of the simplest logger; 0 for a row that isn't compared with it.
void row(const char* what, const std::vector<double>& times, double reference, double target = 0) {
    const auto rate = [](double time) { return time > 0 ? messages() / time * 1e9 : 0; };
    vek_bench::report({.name = what,
                       .own = rate(vek_bench::median(times)),
                       .other = rate(reference),
                       .target = target,
                       .otherName = "floor",
                       .unit = "messages/s",
                       .higherIsBetter = true});
}

// The folder of gzip.exe, which the build puts next to this program.
std::string gzipFolder() {
    char program[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, program, sizeof program);
    const std::string path = program;
    const std::string folder = path.substr(0, path.rfind('\\')) + "\\gzip";
    require(exists(folder + "\\gzip.exe"), "no gzip.exe in " + folder + ": build test_gzip");
    return folder;
}

void measureAll() {
    const vek::VekPal pal(false, 0, 0, nullptr);
    vek::setEnv("PATH", gzipFolder());
    std::vector<double> rotated;
    std::vector<double> plain;
    std::vector<double> floor;
    std::vector<double> bare;
    std::vector<double> appended;
    unsigned archives = 0;
    for (int round = vek_bench::repetitions(rounds); round > 0; --round) {
        {
            const Folder folder;
            rotated.push_back(ownLogger(folder.logFile(), true));
            checkLines(allLines(folder, archives));
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
    row("with rotation and compression", rotated, reference);
    vek_bench::reportValue("archives, every line found once and in order", archives, "archives");
    row("without rotation", plain, reference, 1.0);
    row("the simplest logger", floor, 0);
    row("bare appends of one thread", appended, reference);
    row("bare writes of one thread", bare, reference);
}

}  // namespace

int main(int argc, char** argv) {
    return vek_bench::runBenchmark(argc, argv,
                                   "rotation_load [--smoke] [--json]\n"
                                   "\n"
                                   "Logs 200000 messages of 4 threads through rotation and\n"
                                   "compression and looks for every line.\n",
                                   measureAll);
}
