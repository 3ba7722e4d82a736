// Threads that copy data between strings and a child's pipes, so that no direction blocks another.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vek/fs/stream_file.h"
#include "vek/thread/thread.h"

namespace vek::proc {

// Writes `size` bytes, in as many calls as the stream needs. Throws OsError.
void writeAll(IOutput& stream, const void* buffer, std::uint32_t size);

// Writes a text to a stream and closes the stream. Ends silently if the reader has closed its end.
// No other thread may use the stream or the text until `join`.
class StreamWriter final : public thread::Thread {
  public:
    StreamWriter(fs::StreamFile& toStream, const std::string& fromText);
    void run() override;

  private:
    fs::StreamFile& stream;
    const std::string& text;
};

// Reads a stream to its end and appends the data to a text. No other thread may use either until
// `join`.
class StreamReader final : public thread::Thread {
  public:
    StreamReader(fs::StreamFile& fromStream, std::string& toText);
    void run() override;

  private:
    fs::StreamFile& stream;
    std::string& text;
};

// Starts all threads and joins them, in order. Calls std::terminate if one can't be started or
// joined: the child's data could never be transferred.
void runTransfers(const std::vector<std::unique_ptr<thread::Thread>>& threads) noexcept;

}  // namespace vek::proc
