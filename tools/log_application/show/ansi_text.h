// Conversion of the narrow text of processes to UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace log_application {

// Returns `text` as valid UTF-8. Processes send the bytes of their narrow strings: some are UTF-8,
// others text in this host's ANSI code page, and one message may hold both. Valid UTF-8 is kept;
// other bytes are converted from the ANSI code page, or become U+FFFD if it doesn't have them.
// Calls MultiByteToWideChar. Throws nothing but std::bad_alloc.
std::string utf8Of(std::string_view text);

}  // namespace log_application
