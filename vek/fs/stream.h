// The byte-stream interfaces that files, pipes and sockets share.
#pragma once

#include <cstdint>

namespace vek {

// A source of bytes.
class IInput {
  public:
    // Reads up to `size` bytes into `buffer`. Returns the number of bytes read; 0 at the end of the
    // data.
    virtual std::uint32_t read(void* buffer, std::uint32_t size) = 0;

  protected:
    ~IInput() = default;
};

// A sink of bytes.
class IOutput {
  public:
    // Writes up to `size` bytes of `buffer`. Returns the number of bytes written, which may be
    // less.
    virtual std::uint32_t write(const void* buffer, std::uint32_t size) = 0;

    // Writes out what is buffered. Returns false if this isn't supported. By default nothing is
    // buffered.
    virtual bool flush() { return true; }

  protected:
    ~IOutput() = default;
};

class IInOut : public IInput, public IOutput {
  protected:
    ~IInOut() = default;
};

}  // namespace vek
