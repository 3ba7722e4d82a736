// Which addresses are this host's.
#pragma once

#include <string>

namespace vek::net {

// Whether this host has the numeric IPv4 address `text`, that is, whether a socket can be bound to
// it. Throws NetError with 22 for a text that is no address, and what a socket throws. Safe from
// any thread.
bool isOwnAddress(const std::string& text);

}  // namespace vek::net
