// collector_rounds PORT COUNT: connects COUNT times to a collector on PORT of 127.0.0.1, which
// closes each connection once this side has. Ends with 0 if each end was found, with the number of
// the system's error otherwise.
#include <cstdlib>

#include "tools/log_application/forward/collector_socket.h"
#include "vek/exception.h"
#include "vek/pal.h"

namespace {

using namespace log_application;

void findEnd(std::uint16_t port) {
    constexpr std::int64_t limitMs = 60'000;
    const auto isOver = [] { return false; };
    const auto addresses = resolve({"127.0.0.1", port, true}, limitMs, isOver);
    CollectorSocket socket(addresses.at(0), limitMs, isOver);
    socket.writeSome("9 <11>1 - -");
    socket.endWriting();
    while (!socket.waitFor(false, 50).toRead || socket.discard()) {
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 3) {
        return EXIT_FAILURE;
    }
    const vek::VekPal pal(false, 0, 0, nullptr);
    const auto port = static_cast<std::uint16_t>(std::strtoul(arguments[1], nullptr, 10));
    try {
        for (unsigned long left = std::strtoul(arguments[2], nullptr, 10); left != 0; --left) {
            findEnd(port);
        }
    } catch (const vek::NetError& error) {
        return static_cast<int>(error.code());
    }
    return EXIT_SUCCESS;
}
