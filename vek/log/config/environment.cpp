// Reads levels from the environment.
#include <cstring>
#include <exception>
#include <iostream>
#include <vector>

#include "vek/base/compiler.h"
#include "vek/base/environment_block.h"
#include "vek/base/text.h"
#include "vek/log/configurator.h"
#include "vek/thread/scope_guard.h"

namespace vek::log {

// In the order of the block: of two variables for the same level the later one counts.
void Configurator::parseEnvironment() {
    const EnvironmentBlock block;
    for (const char* entry = block.begin(); entry != block.end(); entry += std::strlen(entry) + 1) {
        // An entry that begins with "=", such as the current directory of a drive, has no name.
        const std::string text = entry;
        const std::size_t separator = text.find('=');
        const std::string name = text.substr(0, separator);
        const std::string value =
            separator == std::string::npos ? std::string() : text.substr(separator + 1);
        if (!parseEnvDefaultLevel(name, value)) {
            parseEnvCategoryLevel(name, value);
        }
    }
    applyLevels();
}

bool Configurator::parseEnvDefaultLevel(const std::string& name, const std::string& value) {
    if (name != "VEKLOG_DEFAULT_LEVEL" && name != "VEKCRIME_DEFAULT_SCOPE") {
        return false;
    }
    try {
        defaultLevel = parseLevel(value);
        return true;
    } catch (const std::exception&) {
        reportEnvError(name, value, VEK_FUNCTION_SIGNATURE);
        return false;
    }
}

bool Configurator::parseEnvCategoryLevel(const std::string& name, const std::string& value) {
    std::vector<std::string> pieces;
    split(name, '_', pieces, true, false);
    if (pieces.size() < 3) {
        return false;
    }
    const std::string prefix = pieces[0] + "_" + pieces[1];
    if (prefix != "VEKCRIME_AGENT" && prefix != "VEKLOG_CATEGORY") {
        return false;
    }
    // Deliberately by the lengths of the pieces: an extra underscore becomes part of the logger's
    // name.
    const std::string logger = name.substr(pieces[0].size() + pieces[1].size() + 2);
    try {
        const Level level = parseLevel(value);
        const thread::ScopeGuard guard(levelsLock);
        loggerLevels[logger] = level;
        return true;
    } catch (const std::exception&) {
        reportEnvError(name, value, VEK_FUNCTION_SIGNATURE);
        return false;
    }
}

void Configurator::reportEnvError(const std::string& name, const std::string& value,
                                  const char* signature) {
    std::cerr << signature << ": invalid level setting in environment in entry: " << name << " = "
              << value << std::endl;
}

}  // namespace vek::log
