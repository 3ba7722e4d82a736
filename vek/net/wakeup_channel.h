// vek::net::WakeupChannel: interrupts a select, which waits for sockets only.
#pragma once

#include "vek/net/ip4_address.h"
#include "vek/net/socket_set.h"
#include "vek/net/udp_socket.h"

namespace vek::net {

// Two datagram sockets on the loopback address. Any thread may notify, one at a time; the rest is
// for the thread that selects. A datagram of another program that finds its way here counts as a
// notification.
class WakeupChannel : public NoCopy {
  public:
    // Tells the constructor to bind nothing.
    struct Unbound {};

    // Binds the reading side to a port that the system chooses. Throws as Socket's operations.
    WakeupChannel();

    // The two sockets alone, without an address. Nothing can be sent yet.
    explicit WakeupChannel(Unbound);

    // Lets the select on `set` return after a notification.
    void addTo(SocketSet& set) const;

    // Sends one byte to the reading side. Touches the writing side only.
    void notify();

    // If the reading side is in `set`, the ready sockets of a select, takes one notification and
    // gives true. Otherwise false.
    bool consume(SocketSet& set);

    // Takes one notification; blocks until there is one.
    void drain();

    // Where notifications go.
    const IP4Address& readerAddress() const { return address; }

  private:
    UDPSocket reader;
    UDPSocket writer;
    IP4Address address;
};

}  // namespace vek::net
