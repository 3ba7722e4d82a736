// Escaping of text that peers sent.
#pragma once

#include <string>
#include <string_view>

namespace log_application {

// Returns `text` without control characters. Line feed, carriage return and tab become \n, \r and
// \t; other ASCII control characters become \x1B; control characters above ASCII, line separators
// and characters that change the direction of writing become \u202E. Bytes from 0x80 to 0x9F that
// aren't UTF-8 become \x9B, since some terminals take them as control characters. Other bytes that
// aren't UTF-8, and the backslash, are unchanged.
std::string escapeControls(std::string_view text);

// Appends `text` as a JSON string with its quotes. The result is valid UTF-8: each byte that isn't
// becomes \ufffd.
void appendJsonString(std::string& out, std::string_view text);

}  // namespace log_application
