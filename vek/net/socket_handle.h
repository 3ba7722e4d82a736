// vek::net::SocketHandle: an accepted connection on its way to the TCPSocket that takes it.
#pragma once

#include "vek/base/no_copy.h"
#include "vek/net/native_socket.h"

namespace vek::net {

// For one thread at a time.
class SocketHandle : public NoCopy {
  public:
    // Owns `adopted`, an open handle, until it is taken.
    explicit SocketHandle(NativeSocket adopted) : handle(adopted) {}

    // Closes a handle that nobody has taken. A failure of that goes unnoticed.
    ~SocketHandle();

    // Whether the handle has been taken.
    bool isReleased() const { return released; }

    // Gives the handle up: it is the caller's. `invalidSocket` if it was taken before.
    NativeSocket take();

  private:
    bool released = false;
    NativeSocket handle;
};

}  // namespace vek::net
