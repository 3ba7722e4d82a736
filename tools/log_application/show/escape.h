// Text that others wrote, made safe to be shown.
#pragma once

#include <string>
#include <string_view>

namespace log_application {

// `text` on one line: line feed, carriage return and tab as \n, \r and \t, other control characters
// as \x1B, those beyond ASCII, the line separators and what turns the direction of writing as
// \u202E. Bytes of 0x80 to 0x9F that are no UTF-8 are control characters to some terminals, and so
// escaped as \x9B; other bytes that are no UTF-8 stay as they are, as does the backslash.
std::string escapeControls(std::string_view text);

// Appends `text` as a JSON string with its quotes, in ASCII and valid UTF-8 whatever bytes it
// holds: each byte that is no UTF-8 becomes \ufffd.
void appendJsonString(std::string& out, std::string_view text);

}  // namespace log_application
