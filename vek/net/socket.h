// vek::net::Socket: owns a socket handle; the operations of all kinds of sockets.
#pragma once

#include <cstdint>

#include "vek/base/no_copy.h"
#include "vek/net/address.h"
#include "vek/net/native_socket.h"
#include "vek/net/socket_set.h"

namespace vek::net {

// Sockets are blocking. Each operation makes one system call and throws NetError with its error
// number, unless noted otherwise. Not thread-safe. Winsock must have been started: see vek::VekPal.
//
// Child processes don't inherit sockets. The handle is made non-inheritable right after the call
// that creates it, so only a child that another thread starts in between gets a copy.
class Socket : public NoCopy {
  public:
    // Calls socket with the three numbers, and SetHandleInformation. Throws PermissionError for
    // WSAEACCES.
    Socket(int domain, int type, int protocol);

    // Takes ownership of `adopted`, an open handle, which stays inheritable or not.
    explicit Socket(NativeSocket adopted) : handle(adopted) {}

    // Closes the socket if it is open. A failure is reported on std::cerr.
    virtual ~Socket();

    // The kind of socket. No system call.
    virtual bool isOpen() const;
    virtual bool isDatagram() const;
    virtual bool isStream() const;
    virtual bool isReliable() const;
    virtual bool isLossy() const;

    // Returns the handle, still owned by this object; `invalidSocket` once closed.
    NativeSocket nativeHandle() const { return handle; }

    // Calls closesocket. The socket counts as closed afterwards even if this throws. Throws for a
    // socket that is closed already.
    void close();

    // Calls bind. Throws PermissionError for WSAEACCES, NoSuchAddress for WSAEADDRNOTAVAIL.
    void bind(const Address& address);

    // Calls connect; blocks until the peer has answered. Throws NoPeer for WSAECONNREFUSED.
    void connect(const Address& address);

    // Calls shutdown for one direction or both; with neither does nothing.
    void shutdown(bool writeSide, bool readSide);

    // Store this socket's own address and the peer's. `address` must have room; its length is
    // reduced to that of the result. Call getsockname and getpeername.
    void localAddress(Address& address) const;
    void peerAddress(Address& address) const;

    // Switch SO_BROADCAST and SO_KEEPALIVE, and set SO_REUSEADDR. Call setsockopt.
    void setBroadcast(bool on);
    void setKeepAlive(bool on);
    void setReuseAddress();

    // Windows has no such options: both do nothing.
    void setReusePort();
    void setTimeoutOption(bool on, std::int64_t value);

    // Reads (with `get`) or sets the size in bytes of the system's send buffer (with `send`) or
    // receive buffer, into or from `value`.
    void bufferSize(bool get, bool send, std::uint32_t& value);

    // Call getsockopt and setsockopt. `length` is the size of `buffer` in bytes; getOption sets it
    // to the size of the value.
    void getOption(int level, int name, void* buffer, std::int32_t& length) const;
    void setOption(int level, int name, const void* buffer, std::int32_t length);

    // Calls select: blocks until a socket in the sets is ready, and removes those that aren't. Each
    // set may be null. Returns true if any socket is ready. Throws OsError, also if all sets are
    // empty or null.
    static bool select(SocketSet* reading, SocketSet* writing, SocketSet* errors);

    // The same with a time-out, after which it returns false. `timeout` divided by 1000 gives
    // seconds, and the remainder, deliberately unscaled, microseconds: 1500 is 1 second and 500
    // microseconds.
    static bool select(SocketSet* reading, SocketSet* writing, SocketSet* errors,
                       std::int64_t timeout);

  protected:
    // Sets an option to 1 or 0, as an int. Calls setsockopt.
    void setFlag(int level, int name, bool on);

    NativeSocket handle;
};

}  // namespace vek::net
