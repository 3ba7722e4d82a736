// The log service's answers to discovery requests.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vek::log {

// What the answer says about this process.
struct ProcessIdentity {
    std::uint32_t pid = 0;
    std::string name;
    std::uint16_t tcpPort = 0;
};

// Returns the text of the reply to `datagram`, or nothing if there is no reply:
//
// - for a type other than "discover-request", which is reported on std::cerr;
// - if a filter doesn't match `self`. The filters "pid", "name" and "ip" are optional; if one is
//   repeated, one match is enough. An ip matches if it is an address of this host. Of a number, the
//   leading digits count.
//
// A parameter "id" is returned as the number that it begins with, or 0. Other parameters are
// reported on std::cerr and ignored.
//
// Throws Telegram::ParseError if `datagram` is no telegram, and NetError if an ip is no address or
// can't be tested. Thread-safe.
std::optional<std::string> answerDiscovery(const std::string& datagram,
                                           const ProcessIdentity& self);

}  // namespace vek::log
