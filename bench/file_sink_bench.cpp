// file_sink_bench: FileSink::store, compared with one bare WriteFile of the same line into a file
// opened in the same way, for appending. Target for a compiled format without a time: at most twice
// the bare time.
//
// The last two figures compare bare loops: appending with writing at the handle's own position,
// which would overwrite the lines of other processes, and with moving to the end before each write,
// as the C runtime does in append mode; between the two calls another process can write to the same
// place. On Windows an append costs as much as a write at a position. Wine asks the host for the
// file's end and moves the position, in two more system calls of the host.
#include <cstdio>
#include <string>

#include "bench/measure.h"
#include "vek/base/windows.h"
#include "vek/log/sinks/file_sink.h"
#include "vek/log/sinks/message_format.h"
#include "vek/time/clock_source.h"

namespace {

using namespace vek::log;
using vek_bench::compare;

constexpr int rounds = 31;
constexpr int lines = 2000;

std::string temporaryFile() {
    char directory[MAX_PATH] = {};
    char name[MAX_PATH] = {};
    GetTempPathA(sizeof directory, directory);
    GetTempFileNameA(directory, "vek", 0, name);
    return name;
}

Message sampleMessage() {
    return Message("tolmarhlp", "copied 345 of 12345 files, C:\\some\\folder\\name.txt", INFO,
                   GetCurrentProcessId());
}

void storeAll(FileSink& sink, const Message& message) {
    for (int i = 0; i < lines; ++i) {
        sink.store(message);
    }
}

void writeAll(HANDLE file, const std::string& line) {
    for (int i = 0; i < lines; ++i) {
        DWORD written = 0;
        WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    }
}

// As the C runtime writes to a file in append mode.
void writeAllAtEnd(HANDLE file, const std::string& line) {
    for (int i = 0; i < lines; ++i) {
        DWORD written = 0;
        SetFilePointer(file, 0, nullptr, FILE_END);
        WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    }
}

// The line that a sink with `config` writes for `message`.
std::string lineOf(FileSinkConfig config, const Message& message) {
    config.path = temporaryFile();
    FileSink(config).store(message);
    std::string line(4096, '\0');
    const HANDLE file = CreateFileA(config.path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    DWORD size = 0;
    ReadFile(file, line.data(), static_cast<DWORD>(line.size()), &size, nullptr);
    CloseHandle(file);
    line.resize(size);
    return line;
}

// A new file for bare writes, deleted when it is closed.
HANDLE openBare(DWORD access) {
    return CreateFileA(temporaryFile().c_str(), access,
                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                       CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
}

void measure(const char* what, FileSinkConfig config, double target = 0) {
    const Message message = sampleMessage();
    config.path = temporaryFile();
    const HANDLE bare = openBare(FILE_APPEND_DATA);
    {
        const std::string line = lineOf(config, message);
        FileSink sink(config);
        compare(
            what, rounds, lines, [&] { storeAll(sink, message); }, [&] { writeAll(bare, line); },
            target);
        vek_bench::require(sink.isGood(), "the log file can't be written");
    }
    CloseHandle(bare);
    DeleteFileA(config.path.c_str());
}

void measureAppending() {
    const std::string line(80, 'x');
    const HANDLE appending = openBare(FILE_APPEND_DATA);
    const HANDLE positioned = openBare(GENERIC_WRITE);
    compare(
        "bare appending, compared with a position of its own", rounds, lines,
        [&] { writeAll(appending, line); }, [&] { writeAll(positioned, line); });
    const HANDLE moved = openBare(GENERIC_WRITE);
    compare(
        "bare appending, compared with a move to the end before each write", rounds, lines,
        [&] { writeAll(appending, line); }, [&] { writeAllAtEnd(moved, line); });
    CloseHandle(appending);
    CloseHandle(positioned);
    CloseHandle(moved);
}

// After 11 seconds a sink that rotates looks at the file's size after each message, and not after
// each hundredth.
void measureAge(FileSinkConfig config) {
    const Message message = sampleMessage();
    config.path = temporaryFile();
    const std::string oldPath = config.path;
    FileSink old(config);
    Sleep(static_cast<DWORD>(vek_bench::repetitions(11100, 1)));
    config.path = temporaryFile();
    FileSink young(config);
    compare(
        "FileSink::store, older than 11 s, compared with a young sink", rounds, lines,
        [&] { storeAll(old, message); }, [&] { storeAll(young, message); }, 1.2);
    vek_bench::require(old.isGood() && young.isGood(), "the log files can't be written");
    DeleteFileA(oldPath.c_str());
    DeleteFileA(config.path.c_str());
}

void measureAll() {
    vek::time::initClocks();
    FileSinkConfig config;
    config.enabled = true;
    config.compress_archives = false;
    config.format = compileFormat("{pid} {tid} [{level}] {category}: {msg}");
    measure("FileSink::store, no rotation", config, 2);
    config.rotate = true;
    config.rotate_size = 1 << 20;
    measure("FileSink::store, rotation not yet due", config, 2);
    measureAge(config);
    config.format = compileFormat("{date} [{level}] {category}: {msg}");
    measure("FileSink::store, with the date", config);
    config.format.clear();
    measure("FileSink::store, default layout", config);
    measureAppending();
}

}  // namespace

int main(int argc, char** argv) {
    return vek_bench::runBenchmark(
        argc, argv,
        "file_sink_bench [--smoke] [--json]\n"
        "\n"
        "FileSink::store, compared with a bare append of the same line.\n",
        measureAll);
}
