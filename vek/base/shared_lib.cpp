#include "vek/base/shared_lib.h"

#include <array>
#include <iostream>

#include <string.h>

#include "vek/base/os_error_text.h"

namespace vek {

SharedLibError::SharedLibError() : errorText(osErrorText(GetLastError())) {}

SharedLibError::SharedLibError(const std::string& symbol)
    : errorText(osErrorText(GetLastError())), symbolName(symbol) {}

std::string SharedLibError::description() const {
    if (text.empty()) {
        text = "Dynamic linker error encountered. ";
        if (!symbolName.empty()) {
            text += symbolName + ": ";
        }
        text += errorText.empty() ? "<no error set>" : errorText;
    }
    return text;
}

SharedLib::~SharedLib() {
    try {
        close();
    } catch (const SharedLibError& error) {
        std::cerr << "Error closing shared library:" << error.printableText();
    }
}

void SharedLib::load(const std::string& name, std::uint32_t /*flags*/) {
    if (module != nullptr) {
        throw UsageError("There is already a shared-library loaded.");
    }
    module = LoadLibraryExA(name.c_str(), nullptr, 0);
    if (module == nullptr) {
        throw SharedLibError();
    }
}

FARPROC SharedLib::resolve(const std::string& symbol) const {
    if (module == nullptr) {
        throw UsageError("Tried to resolve symbol but no library is loaded.");
    }
    const FARPROC address = GetProcAddress(module, symbol.c_str());
    if (address == nullptr) {
        throw SharedLibError(symbol);
    }
    return address;
}

void SharedLib::close() {
    if (module == nullptr) {
        return;
    }
    const bool freed = FreeLibrary(module) != 0;
    module = nullptr;
    if (!freed) {
        throw SharedLibError();
    }
}

std::string SharedLib::modulePath(HMODULE handle) {
    std::array<char, 260> path = {};
    if (GetModuleFileNameA(handle, path.data(), static_cast<DWORD>(path.size())) == 0) {
        throw SharedLibError();
    }
    // Older systems don't terminate a path that they had to cut.
    return std::string(path.data(), strnlen(path.data(), path.size()));
}

const SharedLib& kernel32Library() {
    struct Kernel32 : SharedLib {
        Kernel32() { load("kernel32", 0); }
    };
    static const Kernel32 library;
    return library;
}

}  // namespace vek
