// log_application::Endpoint: the address and port of a log service.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace log_application {

struct Endpoint {
    std::string address;  // numeric IPv4
    std::uint16_t port = 0;

    // "127.0.0.1:49731".
    std::string text() const { return address + ":" + std::to_string(port); }

    // True for 127.0.0.0/8.
    bool isLoopback() const { return address.starts_with("127."); }

    auto operator<=>(const Endpoint&) const = default;
};

// Parses `text`, the value of the option `option`: a numeric IPv4 address or "localhost", a colon
// and a port from 1 to 65535. With a `defaultPort` the colon and the port are optional. Throws
// Failure (exitUsage) for anything else.
Endpoint parseEndpoint(const std::string& option, const std::string& text,
                       std::optional<std::uint16_t> defaultPort = std::nullopt);

// Parses all of `text` as a decimal number. Returns none if it isn't one or is above `highest`.
std::optional<std::uint32_t> parseNumber(std::string_view text, std::uint32_t highest);

}  // namespace log_application
