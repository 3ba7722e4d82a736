// vek::proc::Pipe: a pipe between this process and a child.
//
// Both ends can be inherited at first. The one that stays here is made its own by keepReadEnd or
// keepWriteEnd, and the other is closed once the child has been started: otherwise the reader never
// sees the end of the data. See child.h for what else may happen to inheritable ends.
#pragma once

#include "vek/base/no_copy.h"
#include "vek/fs/pipe_ends.h"

namespace vek::proc {

enum class PipeEnd { read, write };

// Owns the ends that nobody has taken over (StreamFile::takeReadEnd, takeWriteEnd). Not to be used
// by two threads at once.
class Pipe : public fs::PipeEnds, public NoCopy {
  public:
    // Makes both ends, inheritable, with a buffer of 4096 bytes. Stands on CreatePipe. Throws
    // OsError.
    Pipe();

    // Both ends are expected to be closed or taken over. If one isn't, that is reported on
    // std::cerr as a UsageError, and what is open is closed. Throws nothing.
    ~Pipe();

    // The new pipe takes over both handles; those of `other` are marked invalid.
    Pipe(Pipe&& other) noexcept;

    // Closes what is open here, then the same. Nothing happens on an assignment to itself. Throws
    // what `close` throws; `other` then keeps its ends.
    Pipe& operator=(Pipe&& other);

    // Close one end, if it is open. It is marked invalid in any case. Stand on CloseHandle. Throw
    // OsError.
    void closeReadEnd();
    void closeWriteEnd();

    // Closes the read end and then the write end, as above. If the first fails the second stays
    // open.
    void close();

    // Keep one end from being inherited. Stand on SetHandleInformation. Throw OsError.
    void keepReadEnd();
    void keepWriteEnd();
};

}  // namespace vek::proc
