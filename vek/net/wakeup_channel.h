// vek::net::WakeupChannel: interrupts a select, which can wait for sockets only.
#pragma once

#include "vek/net/ip4_address.h"
#include "vek/net/socket_set.h"
#include "vek/net/udp_socket.h"

namespace vek::net {

// A pair of UDP sockets on the loopback address. Any thread may call `notify`, one at a time; only
// the thread that calls select may call the rest. A datagram from another program counts as a
// notification.
class WakeupChannel : public NoCopy {
  public:
    // Selects the constructor that doesn't bind.
    struct Unbound {};

    // Binds the reading socket to a port that the system chooses. Throws as Socket's operations.
    WakeupChannel();

    // Creates the two sockets without an address. `notify` doesn't work yet.
    explicit WakeupChannel(Unbound);

    // Adds the reading socket to `set`, so that a select on it returns after a notification.
    void addTo(SocketSet& set) const;

    // Sends one byte to the reading socket. Uses the writing socket only.
    void notify();

    // If the reading socket is in `set`, the result of a select, consumes one notification and
    // returns true. Otherwise returns false.
    bool consume(SocketSet& set);

    // Consumes one notification; blocks until there is one.
    void drain();

    // The reading socket's address.
    const IP4Address& readerAddress() const { return address; }

  private:
    UDPSocket reader;
    UDPSocket writer;
    IP4Address address;
};

}  // namespace vek::net
