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

StreamWriter::StreamWriter(fs::StreamFile& toStream, const std::string& fromText)
    : Thread("stdin-writer"), stream(toStream), text(fromText) {}

void StreamWriter::run() {
    try {
        writeAll(stream, text.data(), static_cast<std::uint32_t>(text.size()));
    } catch (const OsError& error) {
        if (!meansReaderGone(error.code())) {
            throw;
        }
    }
    stream.close();
}

StreamReader::StreamReader(fs::StreamFile& fromStream, std::string& toText)
    : Thread("output-reader"), stream(fromStream), text(toText) {}

void StreamReader::run() {
    std::string scratch(readSize, '\0');
    while (const std::uint32_t count = stream.read(scratch.data(), readSize)) {
        text.append(scratch, 0, count);
    }
}

void runTransfers(const std::vector<std::unique_ptr<thread::Thread>>& threads) noexcept {
    for (const auto& thread : threads) {
        thread->start();
    }
    for (const auto& thread : threads) {
        thread->join();
    }
}

}  // namespace vek::proc
