// vek::fs::TextReadBuffer: lets a C++ input stream read a file as text.
#pragma once

#include <array>
#include <cstdint>
#include <streambuf>

#include "vek/base/windows.h"

namespace vek::fs {

// Reads through a descriptor of the C runtime in text mode: CR LF arrives as one line end, and a
// Ctrl-Z ends the text. A failed read sets the stream's bad bit, and `error` tells why.
//
// Not to be used by two threads at once.
class TextReadBuffer : public std::streambuf {
  public:
    // Reads from where `file` stands. The handle is duplicated, so it stays the caller's. Throws
    // OsError.
    explicit TextReadBuffer(HANDLE file);
    ~TextReadBuffer() override;
    TextReadBuffer(const TextReadBuffer&) = delete;
    TextReadBuffer& operator=(const TextReadBuffer&) = delete;

    // The system's number of the read that failed; 0 if none has.
    std::uint32_t error() const { return readError; }

  protected:
    int_type underflow() override;

  private:
    int descriptor;
    std::uint32_t readError = 0;
    std::array<char, 4096> buffer;
};

}  // namespace vek::fs
