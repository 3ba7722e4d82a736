// The tail of the helper's command line.
#include <memory>

#include "source/tolmar/command_tail.h"
#include "tests/native/fuzz/fuzz.h"

using namespace tolmar;
using vek::test::require;

namespace {

constexpr char option[] = "-restartgui";
constexpr std::size_t optionLength = sizeof option - 1;

// The directory of `tail`; with `ends` for the one tail that has none.
std::string expectedDirectory(const std::string& tail, Mode mode, bool& ends) {
    std::string argument = tail;
    if (mode == Mode::restartGui) {
        argument.erase(0, optionLength + 1);
    }
    const bool quoted = tail.size() > 1 && argument.starts_with("\"") && tail.ends_with("\"");
    if (!quoted) {
        return argument;
    }
    ends = argument.size() < 2;
    return ends ? "" : argument.substr(1, argument.size() - 2);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string tail = vek::test::textOf(data, size);
    tail.resize(std::min(tail.find('\0'), tail.size()));
    // With no byte behind it, so that whatever is read there is seen.
    const auto bytes = std::make_unique<char[]>(tail.size() + 1);
    tail.copy(bytes.get(), tail.size());
    const Mode mode = selectMode(bytes.get());
    const bool refused = tail.empty() || tail.size() >= refusedTailLength;
    require((mode == Mode::nothing) == refused, "a tail is refused by its length");
    if (refused) {
        return 0;
    }
    require((mode == Mode::restartGui) == tail.starts_with(option), "the option tells the mode");
    const auto directory = std::make_unique<PathBuffer>();
    directory->fill('?');
    bool ends = false;
    const std::string expected = expectedDirectory(tail, mode, ends);
    require(copyDirectory(bytes.get(), mode, *directory) == !ends, "one tail has no directory");
    require(ends || expected == directory->data(), "the directory is what stands there");
    return 0;
}
