// vek::fs::StreamFile: a file that is read and written as a stream of bytes.
#pragma once

#include <cstdint>

#include "vek/fs/file.h"
#include "vek/fs/pipe_ends.h"
#include "vek/fs/stream.h"

namespace vek::fs {

// What an offset counts from, to be written as Whence::end. Any other number means begin.
struct Whence {
    enum Number : std::uint32_t { begin = 0, current = 1, end = 2 };
};

// Moves as a File does. Not to be used by two threads at once.
class StreamFile : public File, public IInOut {
  public:
    // One ReadFile of up to `size` bytes. 0 at the end of the data, which includes a pipe whose
    // writer has closed. Throws OsError.
    std::uint32_t read(void* buffer, std::uint32_t size) override;

    // One WriteFile. The result may be less than `size`. Throws OsError.
    std::uint32_t write(const void* buffer, std::uint32_t size) override;

    // FlushFileBuffers. False if the handle is of a kind that can't be flushed, such as a console.
    // Throws OsError.
    bool flush() override;

    // Moves the position to `offset` bytes behind `whence`, one of Whence; it can't be moved back
    // from there, as `offset` is unsigned. The result is the low 32 bits of the new position.
    // Stands on SetFilePointerEx. Throws OsError.
    std::uint32_t seek(std::uint32_t offset, std::uint32_t whence);

    // Makes the file `size` bytes long, cut or filled up, and leaves the position where it was.
    // Stands on SetFilePointerEx and SetEndOfFile. Throws OsError; the position may have moved
    // then.
    void resize(std::uint64_t size);

    // Take over one end of `pipe`, which is marked as taken there. What is open here is closed
    // first, by the virtual `close`. Throw UsageError if the end is taken already, and what `close`
    // throws; both leave the pipe as it is.
    void takeReadEnd(PipeEnds& pipe) { takeEnd(pipe.readEnd); }
    void takeWriteEnd(PipeEnds& pipe) { takeEnd(pipe.writeEnd); }

  private:
    void takeEnd(HANDLE& end);
    LARGE_INTEGER move(LARGE_INTEGER distance, DWORD method);
};

}  // namespace vek::fs
