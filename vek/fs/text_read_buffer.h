// vek::fs::TextReadBuffer: lets a C++ input stream read a file as text.
#pragma once

#include <array>
#include <cstdint>
#include <streambuf>

#include "vek/base/windows.h"

namespace vek::fs {

// Reads through a descriptor of the C runtime in text mode: CR LF becomes one line end, and Ctrl-Z
// ends the text. A failed read sets the stream's bad bit; `error` returns the reason. Not
// thread-safe.
class TextReadBuffer : public std::streambuf {
  public:
    // Reads from the current position of `file`. Duplicates the handle, so it stays the caller's.
    // Throws OsError.
    explicit TextReadBuffer(HANDLE file);
    ~TextReadBuffer() override;
    TextReadBuffer(const TextReadBuffer&) = delete;
    TextReadBuffer& operator=(const TextReadBuffer&) = delete;

    // The system error of the read that failed; 0 if none has.
    std::uint32_t error() const { return readError; }

  protected:
    int_type underflow() override;

  private:
    int descriptor;
    std::uint32_t readError = 0;
    std::array<char, 4096> buffer;
};

}  // namespace vek::fs
