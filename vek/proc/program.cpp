#include "vek/proc/program.h"

#include <iostream>
#include <memory>
#include <utility>
#include <vector>

#include "vek/base/format.h"
#include "vek/base/text.h"
#include "vek/exception.h"
#include "vek/fs/find_in_path.h"
#include "vek/fs/operations.h"
#include "vek/fs/path_text.h"
#include "vek/proc/null_stream.h"
#include "vek/proc/start_lock.h"
#include "vek/proc/stream_transfer.h"
#include "vek/proc/text_stream.h"
#include "vek/thread/scope_guard.h"

namespace vek::proc {

namespace {

void closeReported(Pipe& pipe) {
    try {
        pipe.close();
    } catch (const OsError& error) {
        std::cerr << error.what() << "\n";
    }
}

std::uint32_t readOnce(fs::StreamFile& stream, std::string& text, std::uint32_t size) {
    std::string arrived(size, '\0');
    text.clear();
    arrived.resize(stream.read(arrived.data(), size));
    text = std::move(arrived);
    return static_cast<std::uint32_t>(text.size());
}

}  // namespace

struct Program::StandardStream {
    std::uint32_t pipeFlag;
    std::uint32_t nullFlag;
    std::uint32_t keepFlag;
    // The child reads it, this process writes it.
    bool isInput;
    HANDLE Child::*handle;
    fs::StreamFile Program::*stream;
};

const std::array<Program::StandardStream, 3> Program::standardStreams = {{
    {StdinPipe, StdinNull, KeepStdin, true, &Program::stdinHandle, &Program::stdinStream},
    {StdoutPipe, StdoutNull, KeepStdout, false, &Program::stdoutHandle, &Program::stdoutStream},
    {StderrPipe, StderrNull, KeepStderr, false, &Program::stderrHandle, &Program::stderrStream},
}};

bool Program::setProgram(const std::string& name, bool required) {
    if (fs::exists(name)) {
        arguments[0] = name;
        return true;
    }
    std::string lastComponent = name;
    fs::baseName(lastComponent);
    arguments[0] = fs::findInPath(lastComponent);
    if (arguments[0].empty() && required) {
        throw RuntimeError(format("Couldn't find the '%s' program", name.c_str()));
    }
    return !arguments[0].empty();
}

void Program::start(std::uint32_t flags) {
    dropUnwatched();
    if (process.dwProcessId != 0) {
        throw UsageError("A child is still present");
    }
    const thread::ScopeGuard starting(startLock());
    Pipes pipes;
    try {
        for (std::size_t i = 0; i < pipes.size(); ++i) {
            connect(standardStreams[i], flags, pipes[i]);
        }
        Child::start(false);
        for (std::size_t i = 0; i < pipes.size(); ++i) {
            handOver(standardStreams[i], pipes[i]);
        }
    } catch (...) {
        for (std::optional<Pipe>& pipe : pipes) {
            if (pipe) {
                closeReported(*pipe);
            }
        }
        forgetPipeEnds(flags);
        throw;
    }
    forgetPipeEnds(flags);
}

void Program::connect(const StandardStream& stream, std::uint32_t flags,
                      std::optional<Pipe>& pipe) {
    constexpr std::uint32_t merged = StdoutPipe | StderrPipe | MergeStderr;
    HANDLE& handle = this->*stream.handle;
    if (stream.pipeFlag == StderrPipe && (flags & merged) == merged) {
        handle = stdoutHandle;
    } else if ((flags & stream.pipeFlag) != 0) {
        pipe.emplace();
        if (stream.isInput) {
            pipe->keepWriteEnd();
            handle = pipe->readEnd;
        } else {
            pipe->keepReadEnd();
            handle = pipe->writeEnd;
        }
    } else if ((flags & stream.nullFlag) != 0) {
        handle = nullStream(stream.isInput ? fs::nullInput() : fs::nullOutput());
    } else if ((flags & stream.keepFlag) == 0) {
        handle = INVALID_HANDLE_VALUE;
    }
}

// Closes this process's copy of the child's end and moves the other end into the stream.
void Program::handOver(const StandardStream& stream, std::optional<Pipe>& pipe) {
    if (!pipe) {
        return;
    }
    if (stream.isInput) {
        pipe->closeReadEnd();
        (this->*stream.stream).takeWriteEnd(*pipe);
    } else {
        pipe->closeWriteEnd();
        (this->*stream.stream).takeReadEnd(*pipe);
    }
    pipe.reset();
}

// Windows reuses the values of closed handles: a later start must not keep these.
void Program::forgetPipeEnds(std::uint32_t flags) {
    for (const StandardStream& stream : standardStreams) {
        if ((flags & stream.pipeFlag) != 0) {
            this->*stream.handle = INVALID_HANDLE_VALUE;
        }
    }
}

// A process that `start` left behind without being watched counts as none.
void Program::dropUnwatched() {
    if (!isWatched()) {
        releaseProcess();
    }
}

bool Program::finish() {
    dropUnwatched();
    wait(status);
    stdinStream.close();
    stdoutStream.close();
    stderrStream.close();
    return status.succeeded();
}

bool Program::run(bool silent) {
    start(silent ? StdoutNull | StderrNull : 0);
    return finish();
}

void Program::runOrThrow(std::uint32_t flags) {
    start(flags | StderrPipe);
    std::string text = readText(stderrStream.isOpen() ? stderrStream : stdoutStream);
    if (finish()) {
        return;
    }
    const std::string failure = format("'%1$s' failed (%2$d):", commandLine().c_str(), status.code);
    throw RuntimeError(failure + "\n\n" + trim(text));
}

bool Program::pipeInto(Program& next) {
    start(StdoutPipe);
    next.setStdinHandle(stdoutStream.nativeHandle());
    try {
        next.start(KeepStdin);
    } catch (...) {
        next.setStdinHandle(INVALID_HANDLE_VALUE);
        throw;
    }
    // Windows may soon reuse the value for another handle.
    next.setStdinHandle(INVALID_HANDLE_VALUE);
    stdoutStream.close();
    const bool succeeded = finish();
    return next.finish() && succeeded;
}

bool Program::exchange(const std::string* input, std::string* output, std::string* errors) {
    if (input != nullptr && (input == output || input == errors)) {
        throw UsageError("Passed the same string object for stdin as for stdout and/or stderr");
    }
    const bool merged = errors != nullptr && errors == output;
    // Made first: nothing can fail between the start and the transfers.
    std::vector<std::unique_ptr<Transfer>> transfers;
    if (input != nullptr) {
        transfers.push_back(std::make_unique<StreamWriter>(stdinStream, *input));
    }
    if (output != nullptr) {
        transfers.push_back(std::make_unique<StreamReader>(stdoutStream, *output));
    }
    if (errors != nullptr && !merged) {
        transfers.push_back(std::make_unique<StreamReader>(stderrStream, *errors));
    }
    start((input != nullptr ? StdinPipe : StdinNull) |
          (output != nullptr ? StdoutPipe : StdoutNull) |
          (errors != nullptr ? StderrPipe : StderrNull) | (merged ? MergeStderr : 0u));
    runTransfers(transfers);
    const bool succeeded = finish();
    for (const auto& transfer : transfers) {
        transfer->throwFailure();
    }
    return succeeded;
}

std::string Program::commandLine() const {
    std::string line = arguments[0];
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        line += " " + arguments[i];
    }
    return line;
}

std::uint32_t Program::read(void* buffer, std::uint32_t size, bool all, bool fromStdout) {
    fs::StreamFile& stream = fromStdout ? stdoutStream : stderrStream;
    std::uint32_t count = stream.read(buffer, size);
    for (std::uint32_t last = count; all && last != 0 && count < size; count += last) {
        last = stream.read(static_cast<char*>(buffer) + count, size - count);
    }
    return count;
}

std::uint32_t Program::readOutput(std::string& text, std::uint32_t size) {
    return readOnce(stdoutStream, text, size);
}

std::uint32_t Program::readErrors(std::string& text, std::uint32_t size) {
    return readOnce(stderrStream, text, size);
}

std::uint32_t Program::write(const void* buffer, std::uint32_t size) {
    writeAll(stdinStream, buffer, size);
    return size;
}

void Program::closeStdin() {
    stdinStream.close();
}

}  // namespace vek::proc
