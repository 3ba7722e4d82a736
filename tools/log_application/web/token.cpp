#include "tools/log_application/web/token.h"

#include <array>

#include "vek/base/windows.h"
// Needs windows.h.
#include <bcrypt.h>

#include "vek/base/format.h"
#include "vek/exception.h"

namespace log_application {

std::string randomToken() {
    std::array<unsigned char, 16> bytes = {};
    const NTSTATUS status =
        BCryptGenRandom(nullptr, bytes.data(), bytes.size(), BCRYPT_USE_SYSTEM_PREFERRED_RNG);
    if (status != 0) {
        throw vek::OsError(static_cast<std::uint32_t>(status));
    }
    std::string token;
    for (const unsigned byte : bytes) {
        token += vek::format("%02x", byte);
    }
    return token;
}

}  // namespace log_application
