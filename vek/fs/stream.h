// The byte-stream interfaces that files, pipes and sockets share.
#pragma once

#include <cstdint>

namespace vek {

// A source of bytes.
class IInput {
  public:
    // Reads up to `size` bytes into `buffer`. The result is the number of bytes read; 0 at the end
    // of the data.
    virtual std::uint32_t read(void* buffer, std::uint32_t size) = 0;

  protected:
    ~IInput() = default;
};

// A taker of bytes.
class IOutput {
  public:
    // Writes up to `size` bytes of `buffer`. The result is the number of bytes written, which may
    // be fewer.
    virtual std::uint32_t write(const void* buffer, std::uint32_t size) = 0;

    // Hands on what is still held back. The result is false where that can't be done. By default
    // nothing is held back.
    virtual bool flush() { return true; }

  protected:
    ~IOutput() = default;
};

class IInOut : public IInput, public IOutput {
  protected:
    ~IInOut() = default;
};

}  // namespace vek
