// vek::log::FileSink: writes messages to a log file, and keeps its size and age in bounds: the file
// becomes archive 1 (see archives.h), older archives move up, the oldest is deleted.
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

// The file is open for others to read, write, rename and delete, and children don't inherit it.
// Rotation isn't coordinated with other processes: two that log to one path rotate it each by
// itself.
class FileSink : public Sink {
  public:
    // Copies `settings`, puts 3, 5120 (KiB) and 604800 (seconds) in the place of numbers that are
    // 0, and opens the file for appending if `enabled`. A file that can't be opened throws nothing:
    // isGood tells. With `compress_archives` the program gzip is looked for along PATH; without one
    // archives stay uncompressed. Throws what finding it throws (fs::findInPath, fs::expand).
    explicit FileSink(const FileSinkConfig& settings);

    // The same with new settings for the file `path`, and `enabled`.
    explicit FileSink(const std::string& path);

    // Closes the file, and doesn't rotate it.
    ~FileSink() override = default;

    // sinkFile.
    int type() const override { return sinkFile; }

    using Sink::store;
    // Writes `message` as one line, without colours, so that it stands in the file at return, and
    // rotates if that is due, for which the caller waits, gzip's run included.
    //
    // A file that couldn't be written to, in an earlier message or when it was opened, turns the
    // sink off for good, in silence; unless the failing message was one at which a rotation fell
    // due, which opens the file anew. A rotation that fails with a vek::Exception is reported on
    // std::cerr, and the sink goes on with the file that stands at the path then: none leaves.
    // Other exceptions do leave: std::out_of_range for an archive whose number is beyond 32 bits,
    // and std::bad_alloc.
    void store(const Message& message) override;

    // "file#" and a number: 0 for the first file sink of the process, and so on.
    std::string id() const override;

    // Whether the file is due to be rotated: it is larger than `rotate_size`, or has been current
    // for longer than `rotate_interval` (by a monotonic clock, and counted from the construction or
    // the last rotation, not from the file's own dates).
    //
    // In the first 11 seconds of a sink the size counts at each hundredth message only. A stream in
    // a failed state counts as larger than any size. Throws OsError if the clock can't be read.
    bool needsRotation();

    // Rotates now, whatever needsRotation says: closes the gaps in the archives' numbers, deletes
    // the oldest archives until there is room for one more, moves the rest up by one, makes the
    // file archive 1, compresses that, and opens a new file. Without a file no archive is made.
    //
    // Throws, with the file closed, what fs::glob, fs::move, fs::remove and fs::exists throw, what
    // a run of gzip throws that can't be started, and std::out_of_range for an archive whose number
    // is beyond 32 bits. A gzip that fails is told on std::cerr, and nothing else.
    void rotate();

    // Whether the stream is in a good state: the file could be opened and written to so far, or
    // wasn't to be opened and nothing was stored yet.
    bool isGood() const { return stream.good(); }

  private:
    // Number and path.
    using Archives = std::map<std::uint32_t, std::string>;

    void openFile();
    void closeFile();
    std::uint64_t writePosition();

    Archives listArchives() const;
    void compactArchives() const;
    void shiftArchives() const;
    void archiveLogFile(const std::string& target) const;
    // Has gzip put "ARCHIVE.gz" in the place of `archive`, and tells whether it has ended well.
    bool compress(const std::string& archive) const;

    FileSinkConfig config;
    // Stamped at construction and after each rotation, also one that failed.
    time::MonotonicClock rotationClock;
    // Stamped at construction and, deliberately, never again.
    const time::MonotonicClock sizeCheckClock;
    fs::AppendBuffer file;
    std::ostream stream;
    // Since construction.
    std::uint32_t messageCount = 0;
    // Empty if archives aren't to be compressed, or can't be.
    std::string gzipPath;
    const std::int32_t sinkNumber;
};

}  // namespace vek::log
