#include "vek/proc/launch_text.h"

namespace vek::proc {

std::string quotedCommandLine(const std::vector<std::string>& arguments) {
    std::string line;
    for (const std::string& argument : arguments) {
        line += line.empty() ? "\"" : " \"";
        line += argument;
        line += '"';
    }
    return line;
}

std::string environmentBlock(const std::vector<std::string>& entries) {
    std::string block;
    for (const std::string& entry : entries) {
        block += entry;
        block += '\0';
    }
    return block;
}

}  // namespace vek::proc
