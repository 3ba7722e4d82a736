#include "vek/base/environment.h"

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace vek {

namespace {

// The room that the value needs, its end included; 0 if there is no such variable.
DWORD neededSize(const std::string& name) {
    const DWORD size = GetEnvironmentVariableA(name.c_str(), nullptr, 0);
    if (size == 0 && GetLastError() != ERROR_ENVVAR_NOT_FOUND) {
        throw OsError(GetLastError());
    }
    return size;
}

}  // namespace

bool getEnv(const std::string& name, std::string& out) {
    DWORD size = neededSize(name);
    if (size == 0) {
        out.clear();
        return false;
    }
    std::string value;
    for (;;) {
        value.resize(size);
        // An empty value gives 0 like a failure, but leaves the last error alone.
        SetLastError(ERROR_SUCCESS);
        const DWORD length = GetEnvironmentVariableA(name.c_str(), value.data(), size);
        if (length == 0) {
            throw OsError(GetLastError());
        }
        if (length < size) {
            value.resize(length);
            out = std::move(value);
            return true;
        }
        // Somebody has set a longer value since: `length` is the room that it needs.
        size = length;
    }
}

bool hasEnv(const std::string& name) {
    return neededSize(name) != 0;
}

void setEnv(const std::string& name, const std::string& value) {
    if (SetEnvironmentVariableA(name.c_str(), value.c_str()) == 0) {
        throw OsError(GetLastError());
    }
}

void unsetEnv(const std::string& name) {
    if (SetEnvironmentVariableA(name.c_str(), nullptr) == 0) {
        throw OsError(GetLastError());
    }
}

}  // namespace vek
