#include "vek/log/sinks/archives.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <stdexcept>
#include <system_error>

#include "vek/base/text.h"

namespace vek::log {

namespace {

// The log file's own name, "old" and the number.
constexpr std::size_t fewestPieces = 3;

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

}  // namespace

std::string archiveName(const std::string& path, std::uint32_t number, bool compressed) {
    return path + ".old." + std::to_string(number) + (compressed ? ".gz" : "");
}

std::string archivePattern(const std::string& path) {
    std::string pattern = path + ".old.*";
    std::replace(pattern.begin(), pattern.end(), '/', '\\');
    return pattern;
}

bool isCompressedArchive(const std::string& archive) {
    return archive.ends_with("gz");
}

std::optional<std::uint32_t> archiveNumber(const std::string& path) {
    std::vector<std::string> pieces;
    split(path, '.', pieces, false, false);
    if (!pieces.empty() && pieces.back() == "gz") {
        pieces.pop_back();
    }
    if (pieces.size() < fewestPieces || pieces[pieces.size() - 2] != "old") {
        return std::nullopt;
    }
    const std::string& digits = pieces.back();
    for (const char character : digits) {
        if (!isDigit(character)) {
            return std::nullopt;
        }
    }
    std::uint32_t number = 0;
    const char* const end = digits.data() + digits.size();
    if (std::from_chars(digits.data(), end, number).ec == std::errc::result_out_of_range) {
        throw std::out_of_range("the number of the archive " + path + " is too large");
    }
    return number;
}

std::map<std::uint32_t, std::string> archivesByNumber(const std::vector<std::string>& paths) {
    std::map<std::uint32_t, std::string> archives;
    for (const std::string& path : paths) {
        if (const std::optional<std::uint32_t> number = archiveNumber(path)) {
            archives.emplace(*number, path);
        }
    }
    return archives;
}

}  // namespace vek::log
