// vek::proc::Child: starts a child process and waits for it.
//
//     Child child;
//     child.setArguments({"C:\\tools\\pack.exe", "-9", "a file"}, true);
//     child.start();
//     ExitStatus status;
//     child.wait(status);
//
// On a system without condition variables (before Windows Vista) children can't be started: `start`
// throws RuntimeError and creates nothing.
//
// A thread of this library, the shepherd, notices the exit of a child; `wait` collects the result
// from it. vek::proc::Program adds pipes and the search for the program.
//
// A child inherits every handle of this process that is inheritable when it starts, whatever the
// handle is for. All Child and Program objects share one lock for their starts, and a Program makes
// and closes its pipes within its start. So a child that another thread starts at the same time
// never inherits those ends. This doesn't protect handles that the program makes inheritable itself
// (a Pipe for setStdoutHandle), nor children that it starts by other means: a stray copy of an end
// keeps the pipe open, and its reader blocked, until that other child has exited too.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vek/base/windows.h"
#include "vek/proc/child_callback.h"
#include "vek/proc/exit_status.h"
#include "vek/proc/pipe.h"

namespace vek::proc {

class Shepherd;

// Not thread-safe: one thread at a time uses an object. Not copyable: two objects would close the
// same handles.
//
// If nobody waited for the child its two handles stay open, deliberately: the destructor neither
// closes them nor ends the child.
class Child {
  public:
    // For `execute`. The bits differ from those of Program::start.
    enum ExecuteFlags : std::uint32_t { NullOutput = 1, NullErrors = 2, NullInput = 4 };

    Child() = default;
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // Starts the process with the current settings, as the head of a new process group. The setters
    // may be called again as soon as this returns. The process stays suspended until its processors
    // are set. With `replaceSelf` this process exits at once with code killCode: the child takes
    // its place, as far as Windows allows.
    //
    // Call it again only after the previous child has been collected: otherwise nobody can wait for
    // that one any more.
    //
    // Throws UsageError without a program (element 0 of the arguments), RuntimeError for more than
    // 32 processors, and OsError if the process can't be created: code 87 (ERROR_INVALID_PARAMETER)
    // for a zero byte in an argument, an environment entry or the working directory, and for an
    // empty environment entry. No child exists then.
    //
    // Two failures leave a process behind that nobody watches; getProcess returns it:
    //   - OsError if the process can't be resumed: it stays suspended.
    //   - RuntimeError if Shepherd::maxChildren children are running: it runs.
    // `wait` without a time-out throws for such a process, with one it never sees its exit.
    //
    // Throws RuntimeError on a system without condition variables, and OsError with code 1131 if
    // the calling thread holds the shepherd's lock (Shepherd::getLock); no child exists then.
    //
    // If the processors can't be set this is reported on std::cerr, and the child runs on all of
    // them. Calls CreateProcessA, SetProcessAffinityMask, ResumeThread and ExitProcess.
    void start(bool replaceSelf = false);

    // Blocks until the child has exited and stores the result in `status`. This collects the child:
    // its handles are closed. With `limited` and a time-out, blocks for `*timeoutMs` milliseconds
    // at most; 0 looks once. After a time-out `status.finished` is false, and `wait` can be called
    // again.
    //
    // In a callback (child_callback.h) `wait` never blocks, with or without a time-out: it returns
    // a result that is already there, which is always so for the child of the callback, and throws
    // RuntimeError for a child whose exit hasn't been noticed yet.
    //
    // Throws UsageError if there is no child; RuntimeError if the shepherd has been shut down since
    // the start, also during the wait and also if a new one exists; RuntimeError for a process that
    // nobody watches (see `start`) if there is no time-out; OsError with code 1131 if the calling
    // thread holds the shepherd's lock, which it then still holds once. After any exception the
    // child's handles are closed, it isn't watched any more, and nobody can wait for it. Its
    // callback is called only if its exit had been noticed before.
    void wait(ExitStatus& status, bool limited = false, const std::int64_t* timeoutMs = nullptr);

    // Notified when the child exits; may be null. Not owned. Throws RuntimeError between `start`
    // and the `wait` that collects the child.
    //
    // The result is handed out before the callback is called, so the call may still be running, or
    // not have begun, when `wait` returns. The callback and this object must live until it has
    // returned. To destroy them safely, let the callback signal as its last step, and wait for that
    // signal too:
    //
    //     void childExited(Child&) override { ...; SetEvent(exited); }
    //
    //     child.wait(status);
    //     WaitForSingleObject(exited, INFINITE);  // both may be destroyed now
    //
    // If `wait` throws there may be no call: see there. Destroy vek::VekPal first then.
    void setNotifyCallback(IChildCallback* callback);
    IChildCallback* getNotifyCallback() const { return notifyCallback; }

    // Replaces all arguments, with the program as element 0, if `includesProgram`; otherwise only
    // those after the program. Element 0 always exists; it may be empty.
    //
    // The command line has each argument in double quotation marks, so that one with blanks arrives
    // whole. Quotation marks inside an argument aren't escaped.
    void setArguments(const std::vector<std::string>& values, bool includesProgram);
    std::vector<std::string> getArguments(bool includesProgram) const;

    // The child's environment, as "NAME=value"; empty means that it inherits this process's.
    void setEnvironment(std::vector<std::string> entries) { environment = std::move(entries); }

    // Empty means this process's own.
    void setWorkingDirectory(const std::string& path) { workingDirectory = path; }

    // Restricts the child to as many processors as the list has elements, from processor 0 upwards.
    // The values of the elements have no effect, deliberately. An empty list means no restriction.
    void setCpuList(std::vector<std::uint32_t> cpus);
    const std::vector<std::uint32_t>& getCpuList() const { return cpuList; }

    // Starts the child outside this process's job.
    void setBreakaway(bool outside) { breakaway = outside; }

    // The child's standard streams. The handles are not owned and must be open at `start`; they
    // need not be inheritable. INVALID_HANDLE_VALUE means this process's own stream. The pipe keeps
    // its end; throw UsageError if that end is closed.
    void setStdinHandle(HANDLE handle) { stdinHandle = handle; }
    void setStdoutHandle(HANDLE handle) { stdoutHandle = handle; }
    void setStdoutHandle(const Pipe& pipe, PipeEnd end);
    void setStderrHandle(HANDLE handle) { stderrHandle = handle; }
    void setStderrHandle(const Pipe& pipe, PipeEnd end);

    // Connect the stream to the null device. Throw UsageError if that isn't open, because no
    // vek::VekPal exists.
    void setStdoutNull();
    void setStderrNull();

    // The current child; both handles INVALID_HANDLE_VALUE and both ids 0 if there is none. This
    // object owns the handles until `wait` closes them.
    const PROCESS_INFORMATION& getProcess() const { return process; }

    // Ends the process `processId` with exit code killCode and doesn't wait for it. Throws OsError
    // if OpenProcess fails. A failure of TerminateProcess is ignored, for instance for a process
    // that has exited.
    static void kill(std::uint32_t processId);

    // Sends Ctrl-C to the process group `processId`; each child is the head of its own group. A new
    // group ignores Ctrl-C until a process in it calls SetConsoleCtrlHandler(NULL, FALSE). Throws
    // OsError, for instance if this process has no console. Calls GenerateConsoleCtrlEvent.
    static void interrupt(std::uint32_t processId);

    // Runs `program` with `programArguments` and blocks until it has exited. `flags` are
    // ExecuteFlags, which connect its standard streams to the null device. Throws as `start`,
    // setStdoutNull and `wait` do.
    static ExitStatus execute(const std::string& program,
                              const std::vector<std::string>& programArguments,
                              std::uint32_t flags = 0);

  protected:
    // Only its size, cpuCount, has an effect.
    std::vector<std::uint32_t> cpuList;
    std::uint32_t cpuCount = 0;
    std::vector<std::string> environment;
    std::vector<std::string> arguments{std::string()};
    PROCESS_INFORMATION process = noProcess();
    std::string workingDirectory;
    HANDLE stdoutHandle = INVALID_HANDLE_VALUE;
    HANDLE stderrHandle = INVALID_HANDLE_VALUE;
    HANDLE stdinHandle = INVALID_HANDLE_VALUE;
    IChildCallback* notifyCallback = nullptr;
    bool breakaway = false;

    // Returns false for a process that `start` has left behind unwatched.
    bool isWatched() const { return watcher != 0; }

    // Closes both handles, if any. Returns the error number of the last failure, or 0.
    DWORD releaseProcess();

  private:
    static PROCESS_INFORMATION noProcess() {
        return {INVALID_HANDLE_VALUE, INVALID_HANDLE_VALUE, 0, 0};
    }
    void createSuspended();
    void collect(ExitStatus& status, Shepherd& shepherd, const std::int64_t* timeoutMs);

    // The number of the shepherd that watches `process`, or 0.
    std::uint32_t watcher = 0;
};

}  // namespace vek::proc
