// Names of files beside a log file.
#include <stdexcept>

#include "tests/native/fuzz/fuzz.h"
#include "vek/log/sinks/archives.h"

using namespace vek::log;
using vek::test::require;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto number = input.ConsumeIntegral<std::uint32_t>();
    const bool compressed = input.ConsumeBool();
    const std::string path = input.ConsumeRemainingBytesAsString();
    const std::string archive = archiveName(path, number, compressed);
    // A name of dots alone has no piece of its own.
    const bool hasPiece = path.find_first_not_of('.') != std::string::npos;
    require(archiveNumber(archive) == (hasPiece ? std::optional(number) : std::nullopt),
            "an archive has its number");
    require(isCompressedArchive(archive) == compressed, "and says if it is compressed");
    try {
        const std::optional<std::uint32_t> other = archiveNumber(path);
        const auto all = archivesByNumber({path, archive, path});
        require(!other || all.at(*other) == path, "the first of one number is taken");
        require(!hasPiece || other == number || all.at(number) == archive, "the others stay");
        require(all.size() <= 2, "there is no other number");
        if (other) {
            require(path.find(std::to_string(*other)) != std::string::npos &&
                        path.find("old.") != std::string::npos,
                    "a number stands in the name");
        }
    } catch (const std::out_of_range&) {
        require(path.find_first_of("0123456789") != std::string::npos, "a number is too large");
    }
    return 0;
}
