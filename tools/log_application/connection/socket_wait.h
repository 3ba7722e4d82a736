// Waiting for sockets with a time limit in milliseconds.
#pragma once

#include <cstdint>

#include "vek/net/socket_set.h"

namespace log_application {

// Blocks until a socket of `reading` is readable or `milliseconds` have passed; 0 and less doesn't
// block. `reading` holds the readable sockets afterwards. Returns whether there are any.
//
// Calls select, whose limit is exact. A limit of the socket (SO_RCVTIMEO) is rounded up to half a
// second by Windows. Throws vek::NetError.
bool waitForReading(vek::net::SocketSet& reading, std::int64_t milliseconds);

}  // namespace log_application
