// The answers of the log service to who looks for processes by UDP.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vek::log {

// What a process tells of itself.
struct ProcessIdentity {
    std::uint32_t pid = 0;
    std::string name;
    std::uint16_t tcpPort = 0;
};

// The text of the reply to `datagram`, the text of a telegram; nothing if there is to be none:
//
// - for a type other than "discover-request", which is reported on std::cerr;
// - for a filter that doesn't match `self`. There are three of them, "pid", "name" and "ip", all
//   optional; if one is there several times, one match is enough. An ip matches if it is an address
//   of this host. Numbers are read as far as they are numbers.
//
// A parameter "id" comes back as the number that it begins with, or 0. Any other is reported on
// std::cerr and ignored.
//
// Throws Telegram::ParseError for a text that is no telegram, NetError for an ip that is no address
// or can't be tried. Safe from any thread.
std::optional<std::string> answerDiscovery(const std::string& datagram,
                                           const ProcessIdentity& self);

}  // namespace vek::log
