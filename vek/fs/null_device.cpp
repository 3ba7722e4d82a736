#include "vek/fs/null_device.h"

#include <memory>

namespace vek::fs {

namespace {

std::unique_ptr<File> input;
std::unique_ptr<File> output;

std::unique_ptr<File> openedNul(std::uint32_t access) {
    auto file = std::make_unique<File>();
    file->open("nul", access);
    return file;
}

}  // namespace

void openNullDevice() {
    auto newInput = openedNul(Access::read);
    auto newOutput = openedNul(Access::write);
    input = std::move(newInput);
    output = std::move(newOutput);
}

void closeNullDevice() {
    output.reset();
    input.reset();
}

File* nullInput() {
    return input.get();
}

File* nullOutput() {
    return output.get();
}

}  // namespace vek::fs
