// The helper's command line, up to where its tail begins.
#include <memory>

#include "source/tolmar/command_tail.h"
#include "tests/native/fuzz/fuzz.h"

using vek::test::require;

namespace {

// The tail of `line`, found by another way than the helper's: with the quoted parts blotted out,
// the name ends at the first byte that is at most a blank.
std::string expectedTail(const std::string& line) {
    std::string blotted = line;
    bool quoted = false;
    for (char& byte : blotted) {
        const bool quote = byte == '"';
        if (quoted || quote) {
            byte = 'x';
        }
        quoted = quoted != quote;
    }
    std::string separators;
    for (char byte = 1; byte <= ' '; ++byte) {
        separators += byte;
    }
    const std::size_t nameEnd = std::min(blotted.find_first_of(separators), line.size());
    const std::size_t start = line.find_first_not_of(" \t", nameEnd);
    return start == std::string::npos ? "" : line.substr(start);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string line = vek::test::textOf(data, size);
    line.resize(std::min(line.find('\0'), line.size()));
    // With no byte behind it, so that a read beyond the terminator is seen.
    const auto bytes = std::make_unique<char[]>(line.size() + 1);
    line.copy(bytes.get(), line.size());
    const char* const tail = tolmar::commandTail(bytes.get());
    require(tail >= bytes.get() && tail <= bytes.get() + line.size(), "the tail is in the line");
    require(line.ends_with(tail), "the tail is the end of the line");
    require(expectedTail(line) == tail, "the tail follows the name");
    return 0;
}
