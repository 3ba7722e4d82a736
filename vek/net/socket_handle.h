// vek::net::SocketHandle: owns an accepted connection until a TCPSocket takes it.
#pragma once

#include "vek/base/no_copy.h"
#include "vek/net/native_socket.h"

namespace vek::net {

// Not thread-safe.
class SocketHandle : public NoCopy {
  public:
    // Takes ownership of `adopted`, an open handle.
    explicit SocketHandle(NativeSocket adopted) : handle(adopted) {}

    // Closes the handle unless it was taken. Failures are ignored.
    ~SocketHandle();

    // Returns true once the handle has been taken.
    bool isReleased() const { return released; }

    // Passes ownership of the handle to the caller. Returns `invalidSocket` if it was taken before.
    NativeSocket take();

  private:
    bool released = false;
    NativeSocket handle;
};

}  // namespace vek::net
