// vek::proc::Child: a child process that is started and waited for.
//
//     Child child;
//     child.setArguments({"C:\\tools\\pack.exe", "-9", "a file"}, true);
//     child.start();
//     ExitStatus status;
//     child.wait(status);
//
// The end of a child is seen by the shepherd's thread (see shepherd.h); `wait` collects the result
// there. vek::proc::Program adds pipes and the search for the program.
//
// A child inherits every handle of this process that is inheritable at its start, whatever it is
// for. The starts of all Child and Program objects exclude each other, and a Program makes and
// closes its pipes within its start, so that none of its ends get into a child that another thread
// starts at the same time. That doesn't hold for handles that a program makes inheritable by itself
// (a Pipe for setStdoutHandle), nor for children that it starts by other means: an end that strays
// so keeps the pipe open, and its reader waiting, until that other child has ended too.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vek/base/windows.h"
#include "vek/proc/child_callback.h"
#include "vek/proc/exit_status.h"
#include "vek/proc/pipe.h"

namespace vek::proc {

// One thread at a time uses an object. A copy would close the same handles, so there is none.
//
// A child that was never waited for keeps its two handles, deliberately: the destructor closes
// neither, nor does it end the child.
class Child {
  public:
    // For `execute`. The bits differ from those of Program::start.
    enum ExecuteFlags : std::uint32_t { NullOutput = 1, NullErrors = 2, NullInput = 4 };

    Child() = default;
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // Starts the process, at the head of a process group of its own, with what the setters have
    // set; those may be used again right afterwards. It is suspended until its processors are set.
    // With `replaceSelf` this process ends at once with exit code killCode, and the child takes its
    // place, as far as this system allows.
    //
    // To be called again only once the former child has been collected: otherwise that one can't be
    // waited for any more.
    //
    // Throws UsageError without a program (element 0 of the arguments), RuntimeError for more than
    // 32 processors; OsError if there is no starting it, with 87 (ERROR_INVALID_PARAMETER) for an
    // argument, environment entry or working directory with a zero byte in it and for an empty
    // environment entry; no child is there then. If it was created but can't be set going OsError
    // is thrown and it stays, suspended. With Shepherd::maxChildren running RuntimeError is thrown:
    // the child runs then, but nothing sees its end, and a `wait` would never return. What there is
    // of such a child is told by getProcess.
    //
    // Processors that can't be set are reported on std::cerr, and the child runs on all. Stands on
    // CreateProcessA, SetProcessAffinityMask, ResumeThread and ExitProcess.
    void start(bool replaceSelf = false);

    // Waits until the child has ended, and stores how; the child is collected then, and its handles
    // are closed. With `limited` and a time-out the wait takes `*timeoutMs` milliseconds at most;
    // 0 looks once. If the time runs out `status.finished` is false, and the child can be waited
    // for again.
    //
    // Throws UsageError if there is no child. In a callback only the child that has just ended can
    // be waited for; RuntimeError for another. RuntimeError also if the shepherd has been shut
    // down since the start. After any exception the child's handles are closed, and it can't be
    // waited for again.
    void wait(ExitStatus& status, bool limited = false, const std::int64_t* timeoutMs = nullptr);

    // Who is told of the end; null for nobody. Not owned. Both the callback and this object have to
    // live until it has been called, which may be later than a `wait` returns. Throws RuntimeError
    // while a child is there.
    void setNotifyCallback(IChildCallback* callback);
    IChildCallback* getNotifyCallback() const { return notifyCallback; }

    // Replaces the arguments: all of them, element 0 being the program, if `includesProgram`,
    // otherwise those behind the program. There is always an element 0, if an empty one.
    //
    // In the command line each argument stands between double quotation marks, so that one with
    // blanks arrives whole; a quotation mark within isn't protected.
    void setArguments(const std::vector<std::string>& values, bool includesProgram);
    std::vector<std::string> getArguments(bool includesProgram) const;

    // The child's own variables, as "NAME=value"; none means those of this process.
    void setEnvironment(std::vector<std::string> entries) { environment = std::move(entries); }

    // Empty means the one of this process.
    void setWorkingDirectory(const std::string& path) { workingDirectory = path; }

    // Restricts the child to as many processors as the list has elements, from processor 0 upwards:
    // deliberately, what the elements are has no effect. An empty list is no restriction.
    void setCpuList(std::vector<std::uint32_t> cpus);
    const std::vector<std::uint32_t>& getCpuList() const { return cpuList; }

    // Starts the child outside the job that this process is in.
    void setBreakaway(bool outside) { breakaway = outside; }

    // The child's standard streams. The handles are not owned, and have to be open at `start`; they
    // may be inheritable or not. INVALID_HANDLE_VALUE means the stream of this process. An end of a
    // pipe stays in the pipe; throw UsageError if it is closed.
    void setStdinHandle(HANDLE handle) { stdinHandle = handle; }
    void setStdoutHandle(HANDLE handle) { stdoutHandle = handle; }
    void setStdoutHandle(const Pipe& pipe, PipeEnd end);
    void setStderrHandle(HANDLE handle) { stderrHandle = handle; }
    void setStderrHandle(const Pipe& pipe, PipeEnd end);

    // Lead them to the null device. Throw UsageError if that isn't open, since there is no
    // vek::VekPal.
    void setStdoutNull();
    void setStderrNull();

    // The running child; INVALID_HANDLE_VALUE and ids of 0 if there is none. The handles are owned
    // by this object until `wait` closes them.
    const PROCESS_INFORMATION& getProcess() const { return process; }

    // Ends the process `processId` with exit code killCode, without waiting for it. Throws OsError
    // if it can't be opened; if it can't be ended, such as one that has ended, nothing is told.
    // Stands on OpenProcess and TerminateProcess.
    static void kill(std::uint32_t processId);

    // Sends Ctrl-C to the process group of `processId`, which each child is the head of. A new
    // group ignores Ctrl-C until a process in it asks for it (SetConsoleCtrlHandler). Throws
    // OsError, as when this process has no console. Stands on GenerateConsoleCtrlEvent.
    static void interrupt(std::uint32_t processId);

    // Runs `program` with `programArguments` to its end. `flags` are ExecuteFlags that lead its
    // standard streams to the null device. Throws as `start`, setStdoutNull and `wait` do.
    static ExitStatus execute(const std::string& program,
                              const std::vector<std::string>& programArguments,
                              std::uint32_t flags = 0);

  protected:
    // Kept beside the count, which alone has an effect.
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

  private:
    static PROCESS_INFORMATION noProcess() {
        return {INVALID_HANDLE_VALUE, INVALID_HANDLE_VALUE, 0, 0};
    }
    void createSuspended();
    void collect(ExitStatus& status, const std::int64_t* timeoutMs);
    DWORD releaseProcess();
};

}  // namespace vek::proc
