#include "vek/proc/pipe.h"

#include <iostream>
#include <utility>

#include "vek/exception.h"

namespace vek::proc {

namespace {

constexpr DWORD bufferSize = 4096;

void closeEnd(HANDLE& end) {
    const HANDLE closing = std::exchange(end, INVALID_HANDLE_VALUE);
    if (closing != INVALID_HANDLE_VALUE && CloseHandle(closing) == 0) {
        throw OsError(GetLastError());
    }
}

void closeReported(HANDLE& end) {
    try {
        closeEnd(end);
    } catch (const OsError& error) {
        std::cerr << error.what() << "\n";
    }
}

void keepEnd(HANDLE end) {
    if (SetHandleInformation(end, HANDLE_FLAG_INHERIT, 0) == 0) {
        throw OsError(GetLastError());
    }
}

}  // namespace

Pipe::Pipe() {
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    if (CreatePipe(&readEnd, &writeEnd, &inheritable, bufferSize) == 0) {
        throw OsError(GetLastError());
    }
}

Pipe::~Pipe() {
    try {
        if (readEnd != INVALID_HANDLE_VALUE || writeEnd != INVALID_HANDLE_VALUE) {
            throw UsageError("One or both Pipe FDs weren't closed");
        }
    } catch (const UsageError& error) {
        std::cerr << error.what() << "\n";
    }
    closeReported(readEnd);
    closeReported(writeEnd);
}

Pipe::Pipe(Pipe&& other) noexcept : PipeEnds(std::exchange(static_cast<PipeEnds&>(other), {})) {}

Pipe& Pipe::operator=(Pipe&& other) {
    if (this != &other) {
        close();
        static_cast<PipeEnds&>(*this) = std::exchange(static_cast<PipeEnds&>(other), {});
    }
    return *this;
}

void Pipe::closeReadEnd() {
    closeEnd(readEnd);
}

void Pipe::closeWriteEnd() {
    closeEnd(writeEnd);
}

void Pipe::close() {
    closeReadEnd();
    closeWriteEnd();
}

void Pipe::keepReadEnd() {
    keepEnd(readEnd);
}

void Pipe::keepWriteEnd() {
    keepEnd(writeEnd);
}

}  // namespace vek::proc
