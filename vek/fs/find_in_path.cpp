#include "vek/fs/find_in_path.h"

#include <vector>

#include "vek/base/environment.h"
#include "vek/base/text.h"
#include "vek/exception.h"
#include "vek/fs/operations.h"
#include "vek/fs/path_text.h"

namespace vek::fs {

namespace {

// Empty for a variable that is absent or empty.
std::string searchPath() {
    std::string value;
    try {
        getEnv(pathVariableName(), value);
    } catch (const OsError& error) {
        // An empty variable is reported as a failure without a number.
        if (error.code() != 0) {
            throw;
        }
    }
    return value;
}

}  // namespace

const std::string& pathVariableName() {
    static const std::string name = "PATH";
    return name;
}

const std::string& executableSuffix() {
    static const std::string suffix = ".exe";
    return suffix;
}

std::string findInPath(const std::string& name, bool directoryOnly) {
    std::string wanted = name;
    removeTrailingSeparators(wanted);
    if (isAbsolute(wanted)) {
        if (!isRegularFile(wanted)) {
            return "";
        }
        return directoryOnly ? dirName(wanted) : wanted;
    }
    std::vector<std::string> directories;
    split(searchPath(), ';', directories, false, false);
    for (const std::string& directory : directories) {
        const std::string candidate = directory + "\\" + wanted + executableSuffix();
        if (isRegularFile(candidate)) {
            return directoryOnly ? directory : candidate;
        }
    }
    return "";
}

}  // namespace vek::fs
