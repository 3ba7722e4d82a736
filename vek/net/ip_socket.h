// vek::net::IPSocketT: a socket of the IP families.
#pragma once

#include "vek/net/native_socket.h"

namespace vek::net {

// The values of AF_INET, AF_INET6, SOCK_STREAM and SOCK_DGRAM.
inline constexpr int ip4Domain = 2;
inline constexpr int ip6Domain = 23;
inline constexpr int streamType = 1;
inline constexpr int datagramType = 2;

// `Base` is Socket or DataSocket; the constructors call its constructors. For a TCP client's socket
// use IPSocketT<DataSocket> with `streamType`.
template <class Base>
class IPSocketT : public Base {
  public:
    IPSocketT(bool ip6, int type, int protocol)
        : Base(ip6 ? ip6Domain : ip4Domain, type, protocol) {}
    explicit IPSocketT(NativeSocket adopted) : Base(adopted) {}
};

}  // namespace vek::net
