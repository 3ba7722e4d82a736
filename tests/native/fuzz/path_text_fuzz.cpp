// The text of a path.
#include "tests/native/fuzz/fuzz.h"
#include "vek/exception.h"
#include "vek/fs/path_text.h"

namespace {

using namespace vek::fs;
using vek::test::require;

void checkParts(const std::string& path) {
    std::string directory = path;
    std::string base = path;
    dirName(directory);
    baseName(base);
    const std::size_t length = dirLength(path);
    require(path.substr(length) == base, "the last component is behind the directory");
    if (length == 0) {
        require(directory == "." && base == path, "without a backslash there is no directory");
    } else {
        require(directory + "\\" + base == path, "directory and name make up the path");
    }
    const std::string last = extension(path, false);
    const std::string all = extension(path, true);
    require(all.ends_with(last) && base.ends_with(all), "the last extension is part of them all");
    for (const std::string& part : extensionParts(path)) {
        require(!part.empty() && part.find('.') == std::string::npos, "parts are between dots");
    }
    std::string cut = path;
    removeTrailingSeparators(cut);
    require(path.starts_with(cut), "only what is at the end goes");
    std::string again = cut;
    require(removeTrailingSeparators(again) == cut, "once is enough");
    require(cut.size() >= rootOf(path).size() || path.empty(), "the root stays");
}

// A path that isn't absolute, put behind `directory` character by character.
std::string expanded(const std::string& path, std::string directory) {
    std::string rest;
    for (const char character : "\\" + path.substr(rootOf(path).size())) {
        if (character != '\\' || !rest.ends_with('\\')) {
            rest += character;
        }
    }
    if (rest.ends_with('\\')) {
        rest.pop_back();
    }
    const std::string first = rest.substr(0, rest.find('\\', 1));
    if (first == "\\." || first == "\\..") {
        rest.erase(0, first.size());
    }
    if (first == "\\..") {
        directory = directory == "\\" ? "." : dirName(directory);
    }
    if (directory.ends_with('\\') && !rest.empty()) {
        directory.pop_back();
    }
    return directory + rest;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto count = input.ConsumeIntegralInRange<std::size_t>(0, 4);
    const std::string other = input.ConsumeRandomLengthString();
    const std::string path = input.ConsumeRemainingBytesAsString();
    checkParts(path);
    const std::string common = commonPrefix(path, other);
    require(common == commonPrefix(other, path), "what two have in common is the same for both");
    require(path.starts_with(common) && other.starts_with(common), "both begin with it");
    require(commonPrefix(path, path).size() <= path.size(), "it is no longer than either");
    std::string stripped = path;
    stripComponents(stripped, count);
    require(path.starts_with(stripped) || count == 0, "components go from the end");
    try {
        const std::string result = expandFrom(path, other);
        const bool slashed = path.substr(rootOf(path).size()).starts_with("/");
        const bool stays = isAbsolute(path) || (!rootOf(path).empty() && slashed);
        require(result == (stays ? path : expanded(path, other)), "a path is put behind another");
    } catch (const vek::RuntimeError&) {
        require(!isAbsolute(path), "an absolute path needs no directory");
    }
    const std::ptrdiff_t at = findFirstOf(path, other, count);
    require(at == static_cast<std::ptrdiff_t>(path.find_first_of(other, count)),
            "a byte is found where it is");
    return 0;
}
