#include "vek/os/library.h"

#include <array>

#include "vek/base/code_page.h"
#include "vek/os/bounded_text.h"

namespace vek::os {

namespace {

// The text of the last failure, deliberately unguarded.
std::array<char, 128> failureText;

void storeFailureText(DWORD error) {
    failureText.fill('\0');
    const DWORD length =
        FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                       0, failureText.data(), failureText.size(), nullptr);
    if (length == 0) {
        boundedPrint(failureText.data(), failureText.size(), "Error %d occured",
                     static_cast<int>(error));
    }
}

// The error number of programPathAndName.
DWORD readProgramPath(char* buffer, std::size_t size, char* name, std::size_t nameSize) {
    if (buffer == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    const DWORD length = GetModuleFileNameA(nullptr, buffer, static_cast<DWORD>(size));
    if (length == size) {
        return ERROR_BUFFER_OVERFLOW;
    }
    if (length == 0) {
        return GetLastError();
    }
    const std::size_t offset = lastBackslash(buffer);
    if (offset == std::string_view::npos) {
        return ERROR_INVALID_NAME;
    }
    char* const backslash = buffer + offset;
    if (name != nullptr) {
        boundedCopy(name, nameSize, backslash + 1);
    }
    *backslash = '\0';
    return ERROR_SUCCESS;
}

}  // namespace

HMODULE loadLibrary(const char* fileName) {
    return fileName != nullptr && fileName[0] != '\0' ? LoadLibraryA(fileName) : nullptr;
}

HMODULE loadLibraryReport(const char* fileName, const char** text) {
    if (fileName == nullptr || fileName[0] == '\0') {
        if (text != nullptr) {
            *text = "filename missing";
        }
        return nullptr;
    }
    const HMODULE module = LoadLibraryA(fileName);
    if (text == nullptr) {
        return module;
    }
    if (module != nullptr) {
        *text = "success";
        return module;
    }
    const DWORD error = GetLastError();
    storeFailureText(error);
    *text = failureText.data();
    SetLastError(error);
    return nullptr;
}

FARPROC libraryFunction(HMODULE module, const char* name) {
    return module != nullptr && name != nullptr && name[0] != '\0' ? GetProcAddress(module, name)
                                                                   : nullptr;
}

int freeLibrary(HMODULE module) {
    return module == nullptr || FreeLibrary(module) != 0 ? 1 : 0;
}

int programPath(char* buffer, std::size_t size, std::uint32_t* error) {
    return programPathAndName(buffer, size, error, nullptr, 0);
}

int programPathAndName(char* buffer, std::size_t size, std::uint32_t* error, char* name,
                       std::size_t nameSize) {
    const DWORD outcome = readProgramPath(buffer, size, name, nameSize);
    if (outcome != ERROR_SUCCESS && buffer != nullptr && size != 0) {
        // Not a path that was cut somewhere.
        buffer[0] = '\0';
    }
    if (error != nullptr) {
        *error = outcome;
    }
    return outcome == ERROR_SUCCESS ? 1 : 0;
}

}  // namespace vek::os
