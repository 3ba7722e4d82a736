// log_application::Endpoint: where a process answers, as the user writes it.
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

    auto operator<=>(const Endpoint&) const = default;
};

// The endpoint that `text` names, given to the option `option`: a numeric IPv4 address or
// "localhost", and a port from 1 to 65535 behind a colon, which may be missing where there is a
// `defaultPort`. Throws Failure (wrong usage) for anything else.
Endpoint parseEndpoint(const std::string& option, const std::string& text,
                       std::optional<std::uint16_t> defaultPort = std::nullopt);

// The whole of `text` as a decimal number of up to `highest`; none if it is something else.
std::optional<std::uint32_t> parseNumber(std::string_view text, std::uint32_t highest);

}  // namespace log_application
