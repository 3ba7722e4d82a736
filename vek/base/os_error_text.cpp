#include "vek/base/os_error_text.h"

#include <iostream>

#include "vek/base/windows.h"

namespace vek {

std::string osErrorText(std::uint32_t code) {
    char* text = nullptr;
    const DWORD length = FormatMessageA(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM,
        nullptr, code, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<char*>(&text), 0,
        nullptr);
    if (length == 0) {
        std::cerr << "vek::osErrorText"
                  << ": error getting error text from FormatMessage!\n";
        return "<unknown-error>";
    }
    std::string result;
    try {
        result.assign(text);
    } catch (...) {
        LocalFree(text);
        throw;
    }
    LocalFree(text);
    // The system ends its texts in CR LF. The last two characters go, whatever they are.
    result.resize(result.size() < 2 ? 0 : result.size() - 2);
    return result;
}

}  // namespace vek
