#include "vek/base/environment_block.h"

#include <iostream>

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace vek {

EnvironmentBlock::EnvironmentBlock() : block(GetEnvironmentStringsA()) {
    if (block == nullptr) {
        throw OsError(GetLastError());
    }
}

EnvironmentBlock::~EnvironmentBlock() {
    try {
        if (FreeEnvironmentStringsA(block) == 0) {
            throw OsError(GetLastError());
        }
    } catch (const Exception& error) {
        std::cerr << "Error freeing environment block:" << error.printableText() << '\n';
    }
}

}  // namespace vek
