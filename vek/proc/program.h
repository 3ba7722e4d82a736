// vek::proc::Program: a child process whose standard streams the caller reads and writes.
//
//     Program sort;
//     sort.setProgram("sort", true);
//     std::string lines = "b\na\n", sorted;
//     if (!sort.exchange(&lines, &sorted, nullptr)) {
//         ...sort.getStatus()...
//     }
//
// A pipe holds 4096 bytes. Beyond that a child's write blocks until the caller reads, and the
// caller's write blocks until the child reads or exits. `exchange` serves all streams at once; a
// caller that uses `start` with several pipes must do this itself.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "vek/fs/stream_file.h"
#include "vek/proc/child.h"

namespace vek::proc {

// Not thread-safe: one thread at a time uses an object. It can be started again after `finish`.
class Program : public Child {
  public:
    // Where the child's standard streams go. For each stream the pipe flag is checked first, then
    // the null device (see vek::VekPal), then the keep flag. With none of them the child uses this
    // process's own stream.
    enum StartFlags : std::uint32_t {
        StdinPipe = 0x001,   // for `write`
        StdoutPipe = 0x002,  // for `read` and `readOutput`
        StderrPipe = 0x004,  // for `read` and `readErrors`
        StdinNull = 0x008,
        StdoutNull = 0x010,
        StderrNull = 0x020,
        MergeStderr = 0x040,  // with StdoutPipe and StderrPipe: both go into the stdout pipe
        KeepStdout = 0x080,   // the handle set by setStdoutHandle
        KeepStderr = 0x100,   // the handle set by setStderrHandle
        KeepStdin = 0x200     // the handle set by setStdinHandle
    };

    // Chooses the program: `name` if a file (or directory) of that name exists, otherwise the
    // result of a search for its last component along PATH (fs/find_in_path.h). If nothing is found
    // the program becomes empty, and this throws RuntimeError if `required`, else returns false.
    // Throws what fs::exists and fs::findInPath throw.
    bool setProgram(const std::string& name, bool required);

    // Starts the child with `flags`, a combination of StartFlags. This process's copies of the
    // child's pipe ends are closed; the handle of a piped stream is INVALID_HANDLE_VALUE
    // afterwards.
    //
    // Throws UsageError if the previous child hasn't been collected or a null device is requested
    // and not open, OsError if a pipe can't be created, and as Child::start. All pipes are closed
    // then. If Child::start leaves an unwatched process behind, getProcess returns it until the
    // next `start` or `finish`, which close its handles: `start` may be called again at once.
    void start(std::uint32_t flags);

    // Blocks until the child has exited, stores its status and closes the pipes. Returns true if it
    // succeeded. The pipes stay open meanwhile: a child that waits for the end of its input, or for
    // its output to be read, never exits. Throws as Child::wait; UsageError after a `start` that
    // has thrown.
    bool finish();

    // Calls `start` and `finish`, with this process's own streams or, if `silent`, with both
    // outputs connected to the null device. Throws as they do.
    bool run(bool silent);

    // Calls `start` with `flags` and StderrPipe, reads the child's standard error (with MergeStderr
    // and StdoutPipe both outputs) to its end, and calls `finish`. Throws RuntimeError if the child
    // didn't succeed; the message has the command line, the exit code as a signed number and the
    // text read. The C runtime reads it in text mode: CR LF is a line end, and it ends at a Ctrl-Z.
    //
    // Also throws as `start` and `finish`, and OsError with 4 (ERROR_TOO_MANY_OPEN_FILES) if the
    // runtime has no free file; the child is running then.
    void runOrThrow(std::uint32_t flags);

    // Starts this program and `next`, with this one's standard output as the standard input of
    // `next`, and finishes both. Returns true if both succeeded. Throws as `start` and `finish`; if
    // `next` can't be started this program is still running and its output isn't read.
    bool pipeInto(Program& next);

    // Starts the child, writes all of `input` to it, appends its output to `output` and `errors`,
    // and finishes it. Returns true if it succeeded. A null pointer means the null device. Each of
    // the three streams has its own thread, so none blocks another.
    //
    // `output` and `errors` may be the same string, which then gets both in the order in which they
    // were written. Throws UsageError if `input` is one of them, and as `start` and `finish`. If a
    // thread can't be started or joined this process is terminated.
    //
    // If a stream can't be transferred, for instance because there is no memory for the output, its
    // pipe is closed, the child is finished all the same, and the failure is thrown: std::bad_alloc
    // or OsError. The strings then hold what had arrived.
    //
    // Input that the child doesn't read, because it closes its end or exits, is dropped silently:
    // the child's exit code says whether it was enough. An output ends when nobody has its pipe
    // open any more; the child's own children may have inherited it.
    bool exchange(const std::string* input, std::string* output, std::string* errors);

    // Returns the program and its arguments joined by single blanks, for messages.
    std::string commandLine() const;

    // Reads up to `size` bytes into `buffer` from the child's standard output or, without
    // `fromStdout`, from its standard error: once, or with `all` until `size` bytes have arrived or
    // the stream ends. Blocks until data arrives. Returns the number of bytes read. Throws OsError.
    std::uint32_t read(void* buffer, std::uint32_t size, bool all, bool fromStdout);

    // Read once, up to `size` bytes, and replace `text` with the result, which is empty at the end
    // of the stream. Return the number of bytes read. Throw OsError; `text` is empty then.
    std::uint32_t readOutput(std::string& text, std::uint32_t size);
    std::uint32_t readErrors(std::string& text, std::uint32_t size);

    // Writes all bytes to the child's standard input; blocks while the pipe is full. Returns
    // `size`. Throws OsError, for instance if the child has closed its end.
    std::uint32_t write(const void* buffer, std::uint32_t size);

    // Closes the pipe, so that the child sees the end of its input. Throws OsError.
    void closeStdin();

    // Returns the result of the last `finish`.
    ExitStatus getStatus() const { return status; }

  private:
    // In the order of `standardStreams`.
    using Pipes = std::array<std::optional<Pipe>, 3>;
    struct StandardStream;
    static const std::array<StandardStream, 3> standardStreams;

    void connect(const StandardStream& stream, std::uint32_t flags, std::optional<Pipe>& pipe);
    void handOver(const StandardStream& stream, std::optional<Pipe>& pipe);
    void forgetPipeEnds(std::uint32_t flags);
    void dropUnwatched();

    ExitStatus status;
    fs::StreamFile stdinStream;
    fs::StreamFile stdoutStream;
    fs::StreamFile stderrStream;
};

}  // namespace vek::proc
