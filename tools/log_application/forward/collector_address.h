// log_application::CollectorAddress: where a log collector listens.
#pragma once

#include <cstdint>
#include <string>

namespace log_application {

struct CollectorAddress {
    std::string host;  // a host name, or a numeric IPv4 or IPv6 address without brackets
    std::uint16_t port = 0;
    bool isNumeric = false;

    // "logs.example.com:601", "[::1]:601".
    std::string text() const;
};

// Parses "syslog+tcp://HOST:PORT", the value of --to. The scheme may be in any case, HOST is a host
// name in ASCII, a numeric IPv4 address, or a numeric IPv6 address in brackets. One slash behind
// the port is accepted. Throws Failure (exitUsage) for anything else, with the right form as its
// advice; also for addresses to which no connection can be made: 0.0.0.0, ::, multicast and
// broadcast.
CollectorAddress parseCollectorAddress(const std::string& text);

}  // namespace log_application
