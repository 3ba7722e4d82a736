// Threads that copy data between strings and a child's pipes, so that no direction blocks another.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "vek/fs/stream_file.h"
#include "vek/thread/thread.h"

namespace vek::proc {

// Writes `size` bytes, in as many calls as the stream needs. Throws OsError.
void writeAll(IOutput& stream, const void* buffer, std::uint32_t size);

// Copies between a stream and a text, and closes the stream, also on failure: a child that reads or
// writes the other end would otherwise block forever. No other thread may use the stream or the
// text until `join`.
class Transfer : public thread::Thread {
  public:
    // Doesn't throw: keeps a failure for throwFailure.
    void run() final;

    // Throws the exception that ended the copying, if any. Call it after `join`.
    void throwFailure() const;

  protected:
    Transfer(const std::string& threadName, fs::StreamFile& transferStream);
    virtual void copy() = 0;

    fs::StreamFile& stream;

  private:
    std::exception_ptr failure;
};

// Writes a text to a stream. Ends silently if the reader has closed its end.
class StreamWriter final : public Transfer {
  public:
    StreamWriter(fs::StreamFile& toStream, const std::string& fromText);

  private:
    void copy() override;

    const std::string& text;
};

// Reads a stream to its end and appends the data to a text.
class StreamReader final : public Transfer {
  public:
    StreamReader(fs::StreamFile& fromStream, std::string& toText);

  private:
    void copy() override;

    std::string& text;
};

// Starts all threads and joins them, in order. Calls std::terminate if one can't be started or
// joined: the child's data could never be transferred.
void runTransfers(const std::vector<std::unique_ptr<Transfer>>& transfers) noexcept;

}  // namespace vek::proc
