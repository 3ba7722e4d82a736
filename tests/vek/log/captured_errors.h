// What a test lets the program write to std::cerr.
#pragma once

#include <cstddef>
#include <iostream>
#include <sstream>
#include <string>

namespace vek::test {

// Takes the place of std::cerr's buffer while it lives. The stream is flushed then only where the
// program flushes it, not by itself after each piece.
class CapturedErrors {
  public:
    CapturedErrors() {
        std::cerr.rdbuf(&buffer);
        std::cerr.unsetf(std::ios_base::unitbuf);
    }
    ~CapturedErrors() {
        std::cerr.setf(std::ios_base::unitbuf);
        std::cerr.rdbuf(original);
    }
    CapturedErrors(const CapturedErrors&) = delete;
    CapturedErrors& operator=(const CapturedErrors&) = delete;

    std::string text() const { return buffer.str(); }

    // What had been written when the stream was flushed last.
    std::string flushedText() const { return text().substr(0, buffer.flushed); }

  private:
    class Buffer : public std::stringbuf {
      public:
        std::size_t flushed = 0;

      protected:
        int sync() override {
            flushed = str().size();
            return std::stringbuf::sync();
        }
    };

    Buffer buffer;
    std::streambuf* const original = std::cerr.rdbuf();
};

}  // namespace vek::test
