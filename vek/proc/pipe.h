// vek::proc::Pipe: a pipe between this process and a child.
//
// Both ends are inheritable at first. Call keepReadEnd or keepWriteEnd for the end that stays in
// this process, and close the other one after the child has been started: otherwise the reader
// never sees the end of the data. See child.h for other children that may inherit an end.
#pragma once

#include "vek/base/no_copy.h"
#include "vek/fs/pipe_ends.h"

namespace vek::proc {

// The two ends of a pipe.
enum class PipeEnd { read, write };

// Owns its ends until StreamFile::takeReadEnd or takeWriteEnd takes them over. Not thread-safe.
class Pipe : public fs::PipeEnds, public NoCopy {
  public:
    // Creates both ends, inheritable, with a buffer of 4096 bytes. Calls CreatePipe. Throws
    // OsError.
    Pipe();

    // Both ends should be closed or taken over by now. If one is still open this is reported on
    // std::cerr as a UsageError, and it is closed. Doesn't throw.
    ~Pipe();

    // Takes both handles from `other`, whose ends become invalid.
    Pipe(Pipe&& other) noexcept;

    // Closes this pipe's open ends, then takes those of `other`. Self-assignment does nothing.
    // Throws what `close` throws; `other` keeps its ends then.
    Pipe& operator=(Pipe&& other);

    // Close one end, if it is open. The end is invalid afterwards even if this throws. Call
    // CloseHandle. Throw OsError.
    void closeReadEnd();
    void closeWriteEnd();

    // Closes the read end and then the write end. If the first fails the second stays open.
    void close();

    // Make one end non-inheritable. Call SetHandleInformation. Throw OsError.
    void keepReadEnd();
    void keepWriteEnd();
};

}  // namespace vek::proc
