#include "tools/log_application/forward/collector_address.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "tools/log_application/connection/endpoint.h"
#include "tools/log_application/program/failure.h"
#include "tools/log_application/show/escape.h"
#include "vek/base/text.h"

namespace log_application {

namespace {

constexpr std::string_view scheme = "syslog+tcp://";
constexpr std::size_t longestHost = 253;
constexpr std::size_t longestLabel = 63;
constexpr std::uint32_t highestPort = 65535;

constexpr const char* form =
    "Write syslog+tcp://HOST:PORT, as syslog+tcp://logs.example.com:601 or syslog+tcp://[::1]:514.";

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

bool isHexDigit(char character) {
    return isDigit(character) || (character >= 'a' && character <= 'f') ||
           (character >= 'A' && character <= 'F');
}

bool isLetterOrDigit(char character) {
    return isDigit(character) || (character >= 'a' && character <= 'z') ||
           (character >= 'A' && character <= 'Z');
}

std::vector<std::string> pieces(std::string_view text, char separator) {
    std::vector<std::string> parts;
    vek::split(std::string(text), separator, parts, false, true);
    return parts;
}

// The four numbers of an IPv4 address. A leading zero is refused: some would read it as octal.
std::optional<std::vector<std::uint32_t>> parseIp4(std::string_view text) {
    const std::vector<std::string> parts = pieces(text, '.');
    std::vector<std::uint32_t> numbers;
    for (const std::string& part : parts) {
        const std::optional<std::uint32_t> number = parseNumber(part, 255);
        if (!number || (part.size() > 1 && part.front() == '0')) {
            return std::nullopt;
        }
        numbers.push_back(*number);
    }
    return numbers.size() == 4 ? std::optional(numbers) : std::nullopt;
}

// True unless the address is 0.0.0.0/8, multicast, reserved or broadcast.
bool isReachableIp4(const std::vector<std::uint32_t>& numbers) {
    constexpr std::uint32_t firstMulticast = 224;
    return numbers[0] != 0 && numbers[0] < firstMulticast;
}

// The number of 16-bit groups in one side of a "::"; none if it isn't a list of groups.
std::optional<std::size_t> countGroups(std::string_view text, bool isLast) {
    if (text.empty()) {
        return 0;
    }
    const std::vector<std::string> parts = pieces(text, ':');
    std::size_t count = 0;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const std::string& part = parts[i];
        if (isLast && i + 1 == parts.size() && parseIp4(part)) {
            count += 2;
        } else if (!part.empty() && part.size() <= 4 && std::ranges::all_of(part, isHexDigit)) {
            ++count;
        } else {
            return std::nullopt;
        }
    }
    return count;
}

bool isIp6(std::string_view text) {
    constexpr std::size_t allGroups = 8;
    const std::size_t gap = text.find("::");
    if (gap == std::string_view::npos) {
        return countGroups(text, true) == allGroups;
    }
    const auto before = countGroups(text.substr(0, gap), false);
    const auto behind = countGroups(text.substr(gap + 2), true);
    return before && behind && *before + *behind < allGroups;
}

// True unless the address is :: or multicast. Expects a valid address.
bool isReachableIp6(std::string_view text) {
    const bool isZero = text.find_first_not_of("0:.") == std::string_view::npos;
    const bool isMulticast =
        text.size() > 4 && (text[0] == 'f' || text[0] == 'F') && (text[1] == 'f' || text[1] == 'F');
    return !isZero && !(isMulticast && text.find(':') == 4);
}

bool isLabel(std::string_view label) {
    return !label.empty() && label.size() <= longestLabel && label.front() != '-' &&
           label.back() != '-' && std::ranges::all_of(label, [](char character) {
               return isLetterOrDigit(character) || character == '-' || character == '_';
           });
}

bool isHostName(std::string_view text) {
    if (text.ends_with('.')) {
        text.remove_suffix(1);
    }
    if (text.empty() || text.size() > longestHost) {
        return false;
    }
    const std::vector<std::string> labels = pieces(text, '.');
    // A name whose last part is a number would be taken for a numeric address.
    return std::ranges::all_of(labels, isLabel) && !std::ranges::all_of(labels.back(), isDigit);
}

Failure refused(const std::string& text, const std::string& why, const std::string& advice = form) {
    return Failure(exitUsage, "\"" + escapeControls(text) + "\", given to --to, " + why, advice);
}

// Sets the host of `collector` from the text ahead of the port.
void setHost(CollectorAddress& collector, std::string_view host, const std::string& text) {
    const Failure unreachable =
        refused(text, "is an address to which no connection can be made.",
                "Write the address of the host on which the collector runs.");
    if (host.starts_with('[') && host.ends_with(']')) {
        collector.host = host.substr(1, host.size() - 2);
        collector.isNumeric = true;
        if (!isIp6(collector.host)) {
            throw refused(text, "has no IPv6 address in its brackets.");
        }
        if (!isReachableIp6(collector.host)) {
            throw unreachable;
        }
        return;
    }
    collector.host = host;
    if (const auto numbers = parseIp4(host)) {
        collector.isNumeric = true;
        if (!isReachableIp4(*numbers)) {
            throw unreachable;
        }
    } else if (host.find(':') != std::string_view::npos) {
        throw refused(text, "has too many colons.",
                      "Put an IPv6 address into brackets, as syslog+tcp://[::1]:514.");
    } else if (!isHostName(host)) {
        throw refused(text, host.empty() ? "has no host." : "has no valid host name.");
    }
}

}  // namespace

std::string CollectorAddress::text() const {
    const bool isIp6Address = host.find(':') != std::string::npos;
    return (isIp6Address ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

CollectorAddress parseCollectorAddress(const std::string& text) {
    std::string begin = text.substr(0, scheme.size());
    if (vek::toLower(begin) != scheme) {
        const bool hasScheme = text.find("://") != std::string::npos;
        throw refused(text, hasScheme ? "isn't syslog+tcp, the only kind of collector."
                                      : "doesn't begin with syslog+tcp://.");
    }
    std::string_view rest = std::string_view(text).substr(scheme.size());
    if (rest.ends_with('/')) {
        rest.remove_suffix(1);
    }
    if (rest.empty()) {
        throw refused(text, "has no host and no port.");
    }
    if (rest.find_first_of("/?#@") != std::string_view::npos) {
        throw refused(text, "has more than a host and a port.");
    }
    const std::size_t colon = rest.rfind(':');
    const std::size_t bracket = rest.rfind(']');
    if (colon == std::string_view::npos || (bracket != std::string_view::npos && colon < bracket)) {
        throw refused(text, "has no port.",
                      "Write the collector's port behind a colon, as syslog+tcp://" +
                          escapeControls(rest) + ":601; collectors often use 601 or 514.");
    }
    const std::optional<std::uint32_t> port = parseNumber(rest.substr(colon + 1), highestPort);
    if (port.value_or(0) == 0) {
        throw refused(text, "has no valid port.", "Write a port from 1 to 65535.");
    }
    CollectorAddress collector;
    collector.port = static_cast<std::uint16_t>(*port);
    setHost(collector, rest.substr(0, colon), text);
    return collector;
}

}  // namespace log_application
