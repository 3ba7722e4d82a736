#include "vek/proc/stream_transfer.h"

#include "vek/exception.h"

namespace vek::proc {

namespace {

constexpr std::uint32_t readSize = 4096;

bool meansReaderGone(std::uint32_t error) {
    return error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE;
}

}  // namespace

void writeAll(IOutput& stream, const void* buffer, std::uint32_t size) {
    const char* const bytes = static_cast<const char*>(buffer);
    for (std::uint32_t written = 0; written < size;) {
        written += stream.write(bytes + written, size - written);
    }
}

Transfer::Transfer(const std::string& threadName, fs::StreamFile& transferStream)
    : Thread(threadName), stream(transferStream) {}

void Transfer::run() {
    try {
        copy();
    } catch (...) {
        failure = std::current_exception();
    }
    try {
        stream.close();
    } catch (...) {
        if (failure == nullptr) {
            failure = std::current_exception();
        }
    }
}

void Transfer::throwFailure() const {
    if (failure != nullptr) {
        std::rethrow_exception(failure);
    }
}

StreamWriter::StreamWriter(fs::StreamFile& toStream, const std::string& fromText)
    : Transfer("stdin-writer", toStream), text(fromText) {}

void StreamWriter::copy() {
    try {
        writeAll(stream, text.data(), static_cast<std::uint32_t>(text.size()));
    } catch (const OsError& error) {
        if (!meansReaderGone(error.code())) {
            throw;
        }
    }
}

StreamReader::StreamReader(fs::StreamFile& fromStream, std::string& toText)
    : Transfer("output-reader", fromStream), text(toText) {}

void StreamReader::copy() {
    std::string scratch(readSize, '\0');
    while (const std::uint32_t count = stream.read(scratch.data(), readSize)) {
        text.append(scratch, 0, count);
    }
}

void runTransfers(const std::vector<std::unique_ptr<Transfer>>& transfers) noexcept {
    for (const auto& transfer : transfers) {
        transfer->start();
    }
    for (const auto& transfer : transfers) {
        transfer->join();
    }
}

}  // namespace vek::proc
