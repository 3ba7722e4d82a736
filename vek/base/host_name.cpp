#include "vek/base/host_name.h"

#include <array>

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace vek {

namespace {

COMPUTER_NAME_FORMAT windowsFormatFromType(int type) {
    switch (type) {
        case 0:
            return ComputerNameDnsHostname;
        case 1:
            return ComputerNameDnsFullyQualified;
        case 2:
            return ComputerNameNetBIOS;
        default:
            throw UsageError("windowsFormatFromType: Invalid type: " + std::to_string(type));
    }
}

}  // namespace

std::string hostName(int type) {
    const COMPUTER_NAME_FORMAT format = windowsFormatFromType(type);
    std::array<char, 16> buffer = {};
    DWORD size = buffer.size();
    if (GetComputerNameExA(format, buffer.data(), &size) == 0) {
        throw OsError(GetLastError());
    }
    return buffer.data();
}

}  // namespace vek
