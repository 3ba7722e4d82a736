// vek::log::FileSink: writes messages to a log file and limits its size and age by rotation: the
// file becomes archive 1, "<path>.old.1", older archives move up, the oldest is deleted.
#pragma once

#include <cstdint>
#include <map>
#include <ostream>
#include <string>

#include "vek/fs/append_buffer.h"
#include "vek/log/sink.h"
#include "vek/log/sinks/file_sink_config.h"
#include "vek/time/clock.h"

namespace vek::log {

// Other programs may read, write, rename and delete the open file. Child processes don't inherit
// it. Rotation isn't coordinated between processes: two that log to one path rotate it
// independently.
class FileSink : public Sink {
  public:
    // Copies `settings`, replaces zeros by 3 archives, 5120 KiB and 604800 seconds, and opens the
    // file for appending if `enabled`. Throws nothing if the file can't be opened: see isGood.
    //
    // With `compress_archives` it searches PATH for the program gzip. Archives stay uncompressed
    // without it, and on a system without condition variables, where no child process can be
    // waited for. Throws what fs::findInPath and fs::expand throw.
    explicit FileSink(const FileSinkConfig& settings);

    // The same with new settings for the file `path`, and `enabled`.
    explicit FileSink(const std::string& path);

    // Closes the file. Doesn't rotate it.
    ~FileSink() override = default;

    // sinkFile.
    int type() const override { return sinkFile; }

    using Sink::store;
    // Writes `message` as one line, without colours, and passes it to the system. Then rotates if
    // that is due, and blocks until gzip has ended.
    //
    // If the file couldn't be opened, or a write failed, the next message turns the sink off for
    // good, silently; unless a rotation was due at the failing message, which reopens the file. A
    // rotation that fails with a vek::Exception is reported on std::cerr, and the sink goes on with
    // the file at the path. Throws std::out_of_range for an archive whose number is beyond 32 bits,
    // and std::bad_alloc.
    void store(const Message& message) override;

    // "file#" and a number: 0 for the first file sink of the process, and so on.
    std::string id() const override;

    // Whether a rotation is due: the file is larger than `rotate_size`, or older than
    // `rotate_interval`. The age is counted by a monotonic clock from the construction or the last
    // rotation, not from the file's own dates.
    //
    // In the first 11 seconds of a sink the size is tested at every hundredth message only. A
    // stream in a failed state counts as larger than any size. Throws OsError if the clock can't be
    // read.
    bool needsRotation();

    // Rotates now, whatever needsRotation returns: closes the gaps in the archives' numbers,
    // deletes the oldest archives until there is room for one more, moves the others up by one,
    // makes the file archive 1, compresses that, and opens a new file. Makes no archive if there is
    // no file.
    //
    // Throws, with the file closed, what fs::glob, fs::move, fs::remove and fs::exists throw, what
    // proc::Child::execute throws if gzip can't be started, and std::out_of_range for an archive
    // whose number is beyond 32 bits. Reports on std::cerr if gzip fails.
    void rotate();

    // Whether the stream is in a good state: every open and write has succeeded so far, or the sink
    // isn't enabled and has stored nothing yet.
    bool isGood() const { return stream.good(); }

  private:
    // Number and path.
    using Archives = std::map<std::uint32_t, std::string>;

    void openFile();
    void closeFile();
    std::uint64_t writePosition();

    Archives listArchives() const;
    bool areArchivesShifted() const;
    void compactArchives() const;
    void shiftArchives() const;
    void archiveLogFile(const std::string& target) const;
    // Runs gzip, which replaces `archive` by "ARCHIVE.gz". False if it fails.
    bool compress(const std::string& archive) const;

    FileSinkConfig config;
    // Stamped at construction and after each rotation, including one that failed.
    time::MonotonicClock rotationClock;
    // Stamped at construction and, deliberately, never again.
    const time::MonotonicClock sizeCheckClock;
    fs::AppendBuffer file;
    std::ostream stream;
    // Since construction.
    std::uint32_t messageCount = 0;
    // Empty if archives shouldn't or can't be compressed.
    std::string gzipPath;
    const std::int32_t sinkNumber;
};

}  // namespace vek::log
