#include "vek/proc/child.h"

#include <iostream>
#include <utility>

#include "vek/exception.h"
#include "vek/proc/inherited_stream.h"
#include "vek/proc/launch_text.h"
#include "vek/proc/null_stream.h"
#include "vek/proc/shepherd.h"
#include "vek/proc/start_lock.h"
#include "vek/thread/scope_guard.h"

namespace vek::proc {

namespace {

// CreateProcessA would cut the text at its first zero byte.
void refuseZeroByte(const std::string& text) {
    if (text.find('\0') != std::string::npos) {
        throw OsError(ERROR_INVALID_PARAMETER);
    }
}

void refuseZeroBytes(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
        refuseZeroByte(text);
    }
}

// An empty entry would end the environment block.
void refuseEmpty(const std::vector<std::string>& entries) {
    for (const std::string& entry : entries) {
        if (entry.empty()) {
            throw OsError(ERROR_INVALID_PARAMETER);
        }
    }
}

HANDLE openEnd(const Pipe& pipe, PipeEnd end) {
    const HANDLE handle = end == PipeEnd::read ? pipe.readEnd : pipe.writeEnd;
    if (handle == INVALID_HANDLE_VALUE) {
        throw UsageError("bad pipe end passed");
    }
    return handle;
}

Shepherd& required(const ShepherdUse& use) {
    if (use.get() == nullptr) {
        throw RuntimeError("The shepherd of this child is gone");
    }
    return *use.get();
}

}  // namespace

void Child::start(bool replaceSelf) {
    if (arguments[0].empty()) {
        throw UsageError("No executable specified");
    }
    ensureShepherd();
    const ShepherdUse use;
    Shepherd& shepherd = required(use);
    shepherd.refuseLockHeld();
    if (cpuCount > maxCpus) {
        throw RuntimeError("Too many CPU affinity settings");
    }
    createSuspended();
    watcher = 0;
    if (cpuCount != 0 && SetProcessAffinityMask(process.hProcess, affinityMask(cpuCount)) == 0) {
        std::cerr << "Couldn't set affinity mask of new child process" << std::endl;
    }
    if (ResumeThread(process.hThread) != 1) {
        throw OsError(GetLastError());
    }
    if (replaceSelf) {
        ExitProcess(killCode);
    }
    const thread::ScopeGuard guard(shepherd.getLock());
    shepherd.addChild(process, notifyCallback != nullptr ? this : nullptr);
    // With the lock held: a callback may wait for this child as soon as it is released.
    watcher = shepherd.getNumber();
}

void Child::createSuspended() {
    refuseZeroBytes(arguments);
    refuseZeroBytes(environment);
    refuseEmpty(environment);
    refuseZeroByte(workingDirectory);
    const thread::ScopeGuard starting(startLock());
    const InheritedStream input(stdinHandle, STD_INPUT_HANDLE);
    const InheritedStream output(stdoutHandle, STD_OUTPUT_HANDLE);
    const InheritedStream errors(stderrHandle, STD_ERROR_HANDLE);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.get();
    startup.hStdOutput = output.get();
    startup.hStdError = errors.get();
    std::string commandLine = quotedCommandLine(arguments);
    std::string block = environmentBlock(environment);
    const DWORD flags = CREATE_SUSPENDED | CREATE_NEW_PROCESS_GROUP |
                        (breakaway ? static_cast<DWORD>(CREATE_BREAKAWAY_FROM_JOB) : 0);
    if (CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, flags,
                       environment.empty() ? nullptr : block.data(),
                       workingDirectory.empty() ? nullptr : workingDirectory.c_str(), &startup,
                       &process) == 0) {
        const DWORD error = GetLastError();
        process = noProcess();
        throw OsError(error);
    }
}

void Child::wait(ExitStatus& status, bool limited, const std::int64_t* timeoutMs) {
    if (process.hProcess == INVALID_HANDLE_VALUE) {
        throw UsageError("tried to wait on non-existant child");
    }
    status = {};
    // Held to the end: the shepherd must not wait on a handle that is closed here.
    const ShepherdUse use(watcher);
    try {
        collect(status, required(use), limited ? timeoutMs : nullptr);
    } catch (...) {
        if (use.get() != nullptr) {
            use.get()->forget(process);
        }
        releaseProcess();
        throw;
    }
}

void Child::collect(ExitStatus& status, Shepherd& shepherd, const std::int64_t* timeoutMs) {
    if (timeoutMs == nullptr && !isWatched()) {
        throw RuntimeError("Nobody watches this child");
    }
    std::uint32_t code = 0;
    if (!shepherd.waitForChild(process, code, timeoutMs)) {
        return;
    }
    status.finished = true;
    status.killed = code == killCode;
    status.code = code;
    const DWORD error = releaseProcess();
    if (error != ERROR_SUCCESS) {
        throw OsError(error);
    }
}

DWORD Child::releaseProcess() {
    DWORD error = ERROR_SUCCESS;
    watcher = 0;
    const PROCESS_INFORMATION closing = std::exchange(process, noProcess());
    for (const HANDLE handle : {closing.hProcess, closing.hThread}) {
        if (handle != INVALID_HANDLE_VALUE && CloseHandle(handle) == 0) {
            error = GetLastError();
        }
    }
    return error;
}

void Child::setNotifyCallback(IChildCallback* callback) {
    if (process.dwProcessId != 0) {
        throw RuntimeError("Can't set notify callback if child is already running");
    }
    notifyCallback = callback;
}

void Child::setArguments(const std::vector<std::string>& values, bool includesProgram) {
    arguments.resize(includesProgram ? 0 : 1);
    arguments.insert(arguments.end(), values.begin(), values.end());
    if (arguments.empty()) {
        arguments.emplace_back();
    }
}

std::vector<std::string> Child::getArguments(bool includesProgram) const {
    return {arguments.begin() + (includesProgram ? 0 : 1), arguments.end()};
}

void Child::setCpuList(std::vector<std::uint32_t> cpus) {
    cpuList = std::move(cpus);
    cpuCount = static_cast<std::uint32_t>(cpuList.size());
}

void Child::setStdoutHandle(const Pipe& pipe, PipeEnd end) {
    stdoutHandle = openEnd(pipe, end);
}

void Child::setStderrHandle(const Pipe& pipe, PipeEnd end) {
    stderrHandle = openEnd(pipe, end);
}

void Child::setStdoutNull() {
    stdoutHandle = nullStream(fs::nullOutput());
}

void Child::setStderrNull() {
    stderrHandle = nullStream(fs::nullOutput());
}

void Child::kill(std::uint32_t processId) {
    const HANDLE victim = OpenProcess(PROCESS_TERMINATE, FALSE, processId);
    if (victim == nullptr) {
        throw OsError(GetLastError());
    }
    TerminateProcess(victim, killCode);
    CloseHandle(victim);
}

void Child::interrupt(std::uint32_t processId) {
    if (GenerateConsoleCtrlEvent(CTRL_C_EVENT, processId) == 0) {
        throw OsError(GetLastError());
    }
}

ExitStatus Child::execute(const std::string& program,
                          const std::vector<std::string>& programArguments, std::uint32_t flags) {
    Child child;
    child.setArguments({program}, true);
    child.setArguments(programArguments, false);
    if ((flags & NullOutput) != 0) {
        child.setStdoutNull();
    }
    if ((flags & NullErrors) != 0) {
        child.setStderrNull();
    }
    if ((flags & NullInput) != 0) {
        child.setStdinHandle(nullStream(fs::nullInput()));
    }
    try {
        child.start();
    } catch (...) {
        // The child may exist although `start` failed. Nobody else could close its handles.
        child.releaseProcess();
        throw;
    }
    ExitStatus status;
    child.wait(status);
    return status;
}

}  // namespace vek::proc
