// vek::proc::Program: a child process with its standard streams in the caller's hands.
//
//     Program sort;
//     sort.setProgram("sort", true);
//     std::string lines = "b\na\n", sorted;
//     if (!sort.exchange(&lines, &sorted, nullptr)) {
//         ...sort.getStatus()...
//     }
//
// A pipe takes 4096 bytes: a child that has written more sleeps until the caller reads, and a
// caller that has written more sleeps until the child reads or ends. `exchange` sees to all streams
// at once; who uses `start` with several pipes has to do that by himself.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "vek/fs/stream_file.h"
#include "vek/proc/child.h"

namespace vek::proc {

// One thread at a time uses an object. It can be started again after `finish`.
class Program : public Child {
  public:
    // What becomes of the child's standard streams. For each the pipe is looked at first, then the
    // null device (see vek::VekPal), then the keeping; without any of them it is the stream of this
    // process.
    enum StartFlags : std::uint32_t {
        StdinPipe = 0x001,   // what is written with `write`
        StdoutPipe = 0x002,  // to be read with `read` or `readOutput`
        StderrPipe = 0x004,  // to be read with `read` or `readErrors`
        StdinNull = 0x008,
        StdoutNull = 0x010,
        StderrNull = 0x020,
        MergeStderr = 0x040,  // with StdoutPipe and StderrPipe: both go into the one of StdoutPipe
        KeepStdout = 0x080,   // what setStdoutHandle has set
        KeepStderr = 0x100,   // what setStderrHandle has set
        KeepStdin = 0x200     // what setStdinHandle has set
    };

    // Chooses the program: `name` if there is a file (or directory) of that name, otherwise what is
    // found for its last component along PATH (see fs/find_in_path.h). If nothing is, the program
    // is empty afterwards, and the result is false or, if it is `required`, RuntimeError is thrown.
    // Throws what fs::exists and fs::findInPath throw.
    bool setProgram(const std::string& name, bool required);

    // Starts the child with `flags`, a sum of StartFlags. The ends of its pipes are closed here;
    // where there was one the handle is INVALID_HANDLE_VALUE afterwards.
    //
    // Throws UsageError if a child is there already or a null device is asked for and not open,
    // OsError if there is no pipe to be had, and as Child::start. All pipes are closed then.
    void start(std::uint32_t flags);

    // Waits for the child without bound, keeps its status, and closes the pipes. True if it
    // succeeded. A child that waits for the end of its input, or for somebody to read what it
    // writes, doesn't end by this. Throws as Child::wait.
    bool finish();

    // `start`, with the streams of this process or, if `silent`, with both outputs to the null
    // device, and `finish`. Throws as they do.
    bool run(bool silent);

    // `start` with `flags` and StderrPipe, and `finish`; what the child writes to its standard
    // error, or with MergeStderr and StdoutPipe to both, is collected. If it didn't succeed throws
    // RuntimeError with that, the command line and the exit code, as a signed number. The text is
    // read as the C runtime reads text: CR LF is a line end, and it stops at a Ctrl-Z.
    //
    // Otherwise throws as `start` and `finish`; and OsError with 4 (ERROR_TOO_MANY_OPEN_FILES) if
    // the runtime has no more files, with the child running.
    void runOrThrow(std::uint32_t flags);

    // Starts this program and `next`, the standard output of this one being the standard input of
    // the other, and finishes both. True if both succeeded. Throws as `start` and `finish`; if
    // `next` can't be started this one is still running, with its output unread.
    bool pipeInto(Program& next);

    // Starts the child, writes all of `input` to it, appends what it writes to `output` and
    // `errors`, and finishes it. True if it succeeded. A null pointer means the null device. The
    // three streams are served by a thread each, so none waits for another.
    //
    // `output` and `errors` may be the same string, which then gets both in the order in which they
    // were written. `input` can't be one of them: throws UsageError. Otherwise throws as `start`
    // and `finish`; a thread that can't be started or joined ends this process.
    //
    // Input that the child doesn't take, because it closes its end or ends, is dropped without a
    // report: how the child ends tells whether it was enough. An output ends when nobody has it
    // open any more, which includes children of the child.
    bool exchange(const std::string* input, std::string* output, std::string* errors);

    // The arguments, the program included, joined by single blanks: for messages.
    std::string commandLine() const;

    // Reads up to `size` bytes into `buffer` from the child's standard output or, without
    // `fromStdout`, from its standard error: once, or with `all` until `size` is reached or nothing
    // more comes. The result is the count. Throws OsError.
    std::uint32_t read(void* buffer, std::uint32_t size, bool all, bool fromStdout);

    // Make `text` what one read of up to `size` bytes gives; empty at the end. Throw OsError;
    // `text` is empty then.
    std::uint32_t readOutput(std::string& text, std::uint32_t size);
    std::uint32_t readErrors(std::string& text, std::uint32_t size);

    // Writes all to the child's standard input. The result is `size`. Throws OsError, as when the
    // child has closed its end.
    std::uint32_t write(const void* buffer, std::uint32_t size);

    // The child sees the end of its input. Throws OsError.
    void closeStdin();

    // The result of the last `finish`.
    ExitStatus getStatus() const { return status; }

  private:
    // In the order of the table of streams.
    using Pipes = std::array<std::optional<Pipe>, 3>;
    struct StandardStream;
    static const std::array<StandardStream, 3> standardStreams;

    void connect(const StandardStream& stream, std::uint32_t flags, std::optional<Pipe>& pipe);
    void handOver(const StandardStream& stream, std::optional<Pipe>& pipe);
    void forgetPipeEnds(std::uint32_t flags);

    ExitStatus status;
    fs::StreamFile stdinStream;
    fs::StreamFile stdoutStream;
    fs::StreamFile stderrStream;
};

}  // namespace vek::proc
