#include "vek/log/sinks/file_sink.h"

#include <algorithm>
#include <atomic>
#include <iostream>
#include <iterator>
#include <limits>
#include <sstream>
#include <utility>

#include "vek/base/compiler.h"
#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/current_directory.h"
#include "vek/fs/find_in_path.h"
#include "vek/fs/glob.h"
#include "vek/fs/move.h"
#include "vek/fs/operations.h"
#include "vek/log/sinks/archives.h"
#include "vek/proc/child.h"
#include "vek/thread/condition_functions.h"

namespace vek::log {

namespace {

constexpr std::uint32_t defaultMaxArchives = 3;
constexpr std::uint64_t defaultRotateSize = 5120;        // KiB
constexpr std::uint64_t defaultRotateInterval = 604800;  // seconds: 7 days
constexpr std::uint64_t bytesPerKib = 1024;
// The number of bytes of a larger size doesn't fit, and no file is that large.
constexpr std::uint64_t largestRotateSize = std::numeric_limits<std::uint64_t>::max() / bytesPerKib;
constexpr std::int64_t millisecondsPerSecond = 1000;

// A young sink tests the size once in so many messages.
constexpr std::uint32_t messagesPerSizeCheck = 100;
constexpr std::int64_t youngMilliseconds = 11000;

std::atomic<std::int32_t> nextSinkNumber = 0;

FileSinkConfig withDefaults(FileSinkConfig config) {
    if (config.max_archives == 0) {
        config.max_archives = defaultMaxArchives;
    }
    if (config.rotate_size == 0) {
        config.rotate_size = defaultRotateSize;
    }
    if (config.rotate_interval == 0) {
        config.rotate_interval = defaultRotateInterval;
    }
    return config;
}

FileSinkConfig enabledFor(const std::string& path) {
    FileSinkConfig config(path);
    config.enabled = true;
    return config;
}

// Whether the end of a child process can be waited for. The emulated conditions of vek::thread
// throw at each wake-up, which ends the shepherd.
bool canRunPrograms() {
    thread::resolveConditionFunctions();
    return thread::nativeConditions() != nullptr;
}

std::string findGzip() {
    const std::string found = fs::findInPath("gzip");
    return found.empty() ? found : fs::expand(found);
}

// Whether another program has the file open and doesn't let others rename it.
bool isHeld(const std::string& path) {
    const HANDLE file =
        CreateFileA(path.c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        CloseHandle(file);
        return false;
    }
    return GetLastError() == ERROR_SHARING_VIOLATION;
}

}  // namespace

FileSink::FileSink(const FileSinkConfig& settings)
    : Sink(config),
      config(withDefaults(settings)),
      rotationClock(true),
      sizeCheckClock(true),
      stream(&file),
      sinkNumber(nextSinkNumber++) {
    if (config.enabled) {
        openFile();
    }
    if (config.compress_archives && canRunPrograms()) {
        gzipPath = findGzip();
    }
}

FileSink::FileSink(const std::string& path) : FileSink(enabledFor(path)) {}

void FileSink::store(const Message& message) {
    if (stream.fail()) {  // tests the bad flag, too
        config.enabled = false;
        return;
    }
    render(stream, message, false);
    stream << std::endl;
    ++messageCount;
    try {
        if (needsRotation()) {
            rotate();
        }
    } catch (const Exception& error) {
        // In one write: this may be repeated at each message.
        std::ostringstream report;
        report << VEK_FUNCTION_SIGNATURE << ": Logfile rotation failed: " << error.what() << "\n";
        std::cerr << report.str() << std::flush;
        if (config.enabled) {
            openFile();
        }
        rotationClock.refresh();
    }
}

std::string FileSink::id() const {
    return "file#" + std::to_string(sinkNumber);
}

bool FileSink::needsRotation() {
    if (!config.enabled || !config.rotate) {
        return false;
    }
    const time::MonotonicClock now(true);
    const std::int64_t age = (now - rotationClock) / millisecondsPerSecond;
    if (config.rotate_interval != 0 && std::cmp_greater(age, config.rotate_interval)) {
        return true;
    }
    if (config.rotate_size == 0) {
        return false;
    }
    if (now - sizeCheckClock < youngMilliseconds && messageCount % messagesPerSizeCheck != 0) {
        return false;
    }
    return writePosition() > std::min(config.rotate_size, largestRotateSize) * bytesPerKib;
}

void FileSink::rotate() {
    closeFile();
    // As long as the file can't be moved, each attempt would bring the archives down to 1 and up to
    // 2 again.
    if (!areArchivesShifted() || !isHeld(config.path)) {
        shiftArchives();
    }
    archiveLogFile(archiveName(config.path, 1, false));
    if (config.enabled) {
        openFile();
    }
    rotationClock.refresh();
}

void FileSink::openFile() {
    if (file.open(config.path)) {
        stream.clear();
    } else {
        stream.setstate(std::ios_base::failbit);
    }
}

void FileSink::closeFile() {
    if (!file.close()) {
        stream.setstate(std::ios_base::failbit);
    }
}

// All ones for a stream in a failed state.
std::uint64_t FileSink::writePosition() {
    return static_cast<std::uint64_t>(std::streamoff(stream.tellp()));
}

FileSink::Archives FileSink::listArchives() const {
    return archivesByNumber(fs::glob(archivePattern(config.path), false));
}

// Whether an earlier attempt has left number 1 free: there are archives 2, 3 and so on, without a
// gap and not too many.
bool FileSink::areArchivesShifted() const {
    std::uint32_t expected = 2;
    for (const auto& [number, path] : listArchives()) {
        if (number != expected) {
            return false;
        }
        ++expected;
    }
    // `expected - 2` archives, and the one to come.
    return expected - 1 <= config.max_archives;
}

// Closes gaps in the numbering.
void FileSink::compactArchives() const {
    std::uint32_t expected = 1;
    for (const auto& [number, path] : listArchives()) {
        if (number != expected) {
            fs::move(path, archiveName(config.path, expected, isCompressedArchive(path)));
        }
        ++expected;
    }
}

// Frees number 1.
void FileSink::shiftArchives() const {
    compactArchives();
    Archives archives = listArchives();
    while (config.max_archives < archives.size() + 1) {
        const auto oldest = std::prev(archives.end());
        fs::remove(oldest->second);
        archives.erase(oldest);
    }
    // Highest number first, so that no target exists.
    for (auto archive = archives.rbegin(); archive != archives.rend(); ++archive) {
        const auto& [number, path] = *archive;
        fs::move(path, archiveName(config.path, number + 1, isCompressedArchive(path)));
    }
}

void FileSink::archiveLogFile(const std::string& target) const {
    if (!fs::exists(config.path)) {
        return;
    }
    fs::move(config.path, target);
    if (!gzipPath.empty() && !compress(target)) {
        // Deliberately without a line end.
        std::cerr << "Warning: failed to compress " << target << " with " << gzipPath;
    }
}

bool FileSink::compress(const std::string& archive) const {
    return proc::Child::execute(gzipPath, {archive}).succeeded();
}

}  // namespace vek::log
