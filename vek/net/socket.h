// vek::net::Socket: the owner of a socket handle, and what all kinds of sockets can do.
#pragma once

#include <cstdint>

#include "vek/base/no_copy.h"
#include "vek/net/address.h"
#include "vek/net/native_socket.h"
#include "vek/net/socket_set.h"

namespace vek::net {

// Sockets block. Each operation is one system call and throws NetError with the number of its
// failure, unless it says more. A socket is for one thread at a time, and must not be made before
// Winsock has been started (winsock.h).
class Socket : public NoCopy {
  public:
    // Takes the system's numbers. Throws PermissionError for WSAEACCES. Stands on socket.
    Socket(int domain, int type, int protocol);

    // Owns `adopted`, an open handle, from now on.
    explicit Socket(NativeSocket adopted) : handle(adopted) {}

    // Closes the socket if it is open. A failure of that is reported on std::cerr.
    virtual ~Socket();

    // The kind of socket; no system call.
    virtual bool isOpen() const;
    virtual bool isDatagram() const;
    virtual bool isStream() const;
    virtual bool isReliable() const;
    virtual bool isLossy() const;

    // The handle, still owned by this object; `invalidSocket` once closed.
    NativeSocket nativeHandle() const { return handle; }

    // Closes. Afterwards the socket counts as closed in any case. Closing a closed one is a failure
    // as any other. Stands on closesocket.
    void close();

    // Throws PermissionError for WSAEACCES, NoSuchAddress for WSAEADDRNOTAVAIL.
    void bind(const Address& address);

    // Blocks until the peer has answered. Throws NoPeer for WSAECONNREFUSED.
    void connect(const Address& address);

    // Ends one direction or both; with neither nothing is done.
    void shutdown(bool writeSide, bool readSide);

    // The address that this socket is bound to, and that of the peer. `address` has to have room
    // for it; its length falls to that of what the system gave. Stand on getsockname and
    // getpeername.
    void localAddress(Address& address) const;
    void peerAddress(Address& address) const;

    void setBroadcast(bool on);
    void setKeepAlive(bool on);
    void setReuseAddress();

    // Not known to this system: nothing is done.
    void setReusePort();
    void setTimeoutOption(bool on, std::int64_t value);

    // The size in bytes of the system's buffer for sending, or otherwise that for receiving: with
    // `get` it is stored in `value`, without it is set from there.
    void bufferSize(bool get, bool send, std::uint32_t& value);

    // `length` is the size of `buffer` in bytes, and becomes that of the value.
    void getOption(int level, int name, void* buffer, std::int32_t& length) const;
    void setOption(int level, int name, const void* buffer, std::int32_t length);

    // Waits until a socket of the sets is ready, and leaves those in the sets that are. Each set
    // may be null. True if any is ready. Throws OsError; also if there is no socket to wait for.
    static bool select(SocketSet* reading, SocketSet* writing, SocketSet* errors);

    // The same, but waits no longer than `timeout`, and then gives false. The whole thousands of
    // `timeout` count as seconds, its remainder as microseconds: 1500 are 1 second and 500
    // microseconds. This is deliberate.
    static bool select(SocketSet* reading, SocketSet* writing, SocketSet* errors,
                       std::int64_t timeout);

  protected:
    void setFlag(int level, int name, bool on);

    NativeSocket handle;
};

}  // namespace vek::net
