#include "tools/log_application/connection/endpoint.h"

#include <array>
#include <charconv>

#include "tools/log_application/program/failure.h"
#include "tools/log_application/show/escape.h"
#include "vek/exception.h"
#include "vek/net/address_text.h"

namespace log_application {

namespace {

constexpr std::uint32_t highestPort = 65535;

// Doesn't use IP4Address, which includes the system's headers.
bool isAddress(const std::string& text) {
    using vek::net::ip4Form;
    std::array<char, ip4Form.offset + ip4Form.size> raw;
    try {
        vek::net::parseAddress(ip4Form, text, raw.data());
    } catch (const vek::NetError&) {
        return false;
    }
    return true;
}

}  // namespace

std::optional<std::uint32_t> parseNumber(std::string_view text, std::uint32_t highest) {
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    const bool whole = error == std::errc() && stop == end;
    return whole && number <= highest ? std::optional(number) : std::nullopt;
}

Endpoint parseEndpoint(const std::string& option, const std::string& text,
                       std::optional<std::uint16_t> defaultPort) {
    const std::size_t colon = text.rfind(':');
    std::string address = text.substr(0, colon);
    if (address == "localhost") {
        address = "127.0.0.1";
    }
    std::uint32_t port = defaultPort.value_or(0);
    if (colon != std::string::npos) {
        port = parseNumber(std::string_view(text).substr(colon + 1), highestPort).value_or(0);
    }
    if (!isAddress(address) || port == 0) {
        throw Failure(
            exitUsage, "\"" + escapeControls(text) + "\", given to " + option + ", is no address.",
            defaultPort
                ? "Write a numeric IPv4 address, as 127.0.0.1; a port may follow behind a colon."
                : "Write a numeric IPv4 address and a port, as 127.0.0.1:49731; "
                  "\"log_application ps\" shows the ports.");
    }
    return {address, static_cast<std::uint16_t>(port)};
}

}  // namespace log_application
