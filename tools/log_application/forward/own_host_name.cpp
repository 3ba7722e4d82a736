#include "tools/log_application/forward/own_host_name.h"

#include "vek/base/windows.h"

namespace log_application {

std::string ownHostName() {
    DWORD size = 0;
    GetComputerNameExA(ComputerNameDnsFullyQualified, nullptr, &size);
    std::string name(size, '\0');
    if (size == 0 || GetComputerNameExA(ComputerNameDnsFullyQualified, name.data(), &size) == 0) {
        return "";
    }
    name.resize(size);
    return name;
}

}  // namespace log_application
