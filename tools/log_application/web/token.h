// The secret in the page's address.
#pragma once

#include <string>

namespace log_application {

// Returns 128 random bits as 32 hexadecimal digits. Calls BCryptGenRandom. Throws vek::OsError.
std::string randomToken();

}  // namespace log_application
