// vek::fs::StreamFile: a file that is read and written as a stream of bytes.
#pragma once

#include <cstdint>

#include "vek/fs/file.h"
#include "vek/fs/pipe_ends.h"
#include "vek/fs/stream.h"

namespace vek::fs {

// What an offset counts from, written as Whence::end. Any other number means begin.
struct Whence {
    // The values.
    enum Number : std::uint32_t { begin = 0, current = 1, end = 2 };
};

// Movable, as a File is. Not thread-safe.
class StreamFile : public File, public IInOut {
  public:
    // Reads up to `size` bytes by one ReadFile. Returns 0 at the end of the data, and for a pipe
    // whose writing end is closed. Throws OsError, with 33 (ERROR_LOCK_VIOLATION) if another handle
    // has locked the file.
    std::uint32_t read(void* buffer, std::uint32_t size) override;

    // Writes by one WriteFile; may write less than `size`. Throws OsError.
    std::uint32_t write(const void* buffer, std::uint32_t size) override;

    // Calls FlushFileBuffers. Returns false for a handle that can't be flushed, such as a console.
    // Throws OsError.
    bool flush() override;

    // Moves the position to `offset` bytes behind `whence`, one of Whence; never before it, as
    // `offset` is unsigned. Returns the low 32 bits of the new position. Calls SetFilePointerEx.
    // Throws OsError.
    std::uint32_t seek(std::uint32_t offset, std::uint32_t whence);

    // Cuts or extends the file to `size` bytes; keeps the position. Calls SetFilePointerEx and
    // SetEndOfFile. Throws OsError; the position may have changed then.
    void resize(std::uint64_t size);

    // Take over one end of `pipe` and mark it as taken there. Close what is open here first, by the
    // virtual `close`. Throw UsageError if the end is taken already, and what `close` throws;
    // neither changes the pipe.
    void takeReadEnd(PipeEnds& pipe) { takeEnd(pipe.readEnd); }
    void takeWriteEnd(PipeEnds& pipe) { takeEnd(pipe.writeEnd); }

  private:
    void takeEnd(HANDLE& end);
    LARGE_INTEGER move(LARGE_INTEGER distance, DWORD method);
};

}  // namespace vek::fs
