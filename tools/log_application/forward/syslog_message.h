// Log lines as syslog messages: RFC 5424, framed by octet counting as in RFC 6587.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/log_application/show/log_line.h"

namespace log_application {

// The facility of --facility unless given: messages of user programs.
inline constexpr int userFacility = 1;

// Parses the name of a facility, such as "user" or "local0", or its number from 0 to 23. Returns
// none for anything else.
std::optional<int> parseFacility(std::string_view text);

// Returns the severity of a level: ERR 3, WARN 4, INFO 6, DEBUG and TRACE 7; 5 (notice) for a line
// whose level isn't one of these, or that has none.
int severityOf(std::optional<vek::log::Level> level);

// Who logged a line. Empty: unknown, sent as "-".
struct SyslogOrigin {
    std::string host;
    std::string program;
};

// Returns `line` as one syslog message:
//
//     <14>1 2026-11-21T05:40:41.123Z host program pid logger [meta sequenceId="1"]
//     [attributes@32473 key="value"] <BOM>text
//
// `sequence` is from 1 to 2147483647. The text is UTF-8 with control characters escaped, as by
// LineRenderer. In the header every character that isn't printable ASCII becomes "_", and a field
// that is too long is cut: host 255, program 48, logger 32, the name of an attribute 32. A time
// outside the years 0 to 9999 is sent as "-". A line without attributes has no such element.
std::string syslogMessage(const LogLine& line, const SyslogOrigin& origin, int facility,
                          std::uint32_t sequence);

// Returns a message of this program itself, of the severity warning: `count` messages were lost.
// `nowMs` is the time in milliseconds since 1970-01-01 00:00 UTC.
std::string lossMessage(std::uint64_t count, const std::string& host, int facility,
                        std::uint32_t sequence, std::int64_t nowMs, std::uint32_t pid);

// Returns the frame of `message`: its length in bytes, in decimal, a blank, and the message.
std::string octetCounted(const std::string& message);

}  // namespace log_application
