// Threads that carry data between strings and the pipes of a child, so that no direction waits for
// another.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vek/fs/stream_file.h"
#include "vek/thread/thread.h"

namespace vek::proc {

// Writes `size` bytes, in as many pieces as the stream takes. Throws OsError.
void writeAll(IOutput& stream, const void* buffer, std::uint32_t size);

// Writes a text to a stream and closes that. A reader that has closed its end ends the writing
// without a report. Stream and text belong to the thread until it is joined.
class StreamWriter final : public thread::Thread {
  public:
    StreamWriter(fs::StreamFile& toStream, const std::string& fromText);
    void run() override;

  private:
    fs::StreamFile& stream;
    const std::string& text;
};

// Appends what comes from a stream to a text, up to its end. As above.
class StreamReader final : public thread::Thread {
  public:
    StreamReader(fs::StreamFile& fromStream, std::string& toText);
    void run() override;

  private:
    fs::StreamFile& stream;
    std::string& text;
};

// Starts all threads and joins them, in their order. One that can't be started or joined ends the
// process through std::terminate: nobody could take the child's data any more.
void runTransfers(const std::vector<std::unique_ptr<thread::Thread>>& threads) noexcept;

}  // namespace vek::proc
