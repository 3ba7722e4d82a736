// Finds logging.conf.
#include <vector>

#include "vek/fs/operations.h"
#include "vek/fs/path_text.h"
#include "vek/fs/program_path.h"
#include "vek/log/configurator.h"

namespace vek::log {

// Searches the executable's directory and its parents, and in each of them the directory "etc". The
// entry found need not be a file.
std::string Configurator::findConfigFile() {
    std::vector<std::string> components = fs::components(programDirectory());
    for (; !components.empty(); components.pop_back()) {
        const std::string directory = fs::join(components);
        for (const std::string& path : {fs::join({directory, configFileName}),
                                        fs::join({directory, "etc", configFileName})}) {
            if (fs::exists(path)) {
                return path;
            }
        }
    }
    return {};
}

// The path of the file to make if there is none.
std::string Configurator::defaultConfigPath() {
    return fs::join({programDirectory(), configFileName});
}

}  // namespace vek::log
