// How a test ends log_service_program as if it were killed.
#pragma once

#include <string>

#include "vek/base/windows.h"

namespace log_application_test {

// The event at which the process `id` ends itself at once, without any clean-up.
inline std::string endRequestName(DWORD id) {
    return "log-service-program-end-" + std::to_string(id);
}

}  // namespace log_application_test
