// The simplest logger of the log's design, built over the system's locks (floor_system) and over
// those of the C++ runtime (floor_runtime): FLOOR_LOCK names the lock.
#include "bench/floor_logger.h"
#include "bench/peers/contestant.h"

namespace {

constexpr int info = 3;
constexpr int debug = 4;

using Logger = vek_bench::BasicFloorLogger<vek_bench::FLOOR_LOCK>;
std::unique_ptr<Logger> logger;

void statement(int level, int i) {
    if (logger->passes(level)) {
        logger->post([i](std::ostream& out) {
            out << "request " << i << " from " << peers::host(i) << " took "
                << peers::milliseconds(i) << " ms";
        });
    }
}

struct Floor {
    static const char* name() { return FLOOR_NAME; }
    static void open(const peers::Setup& setup) {
        std::FILE* const file = setup.appending ? peers::openForAppending(setup.file)
                                                : std::fopen(setup.file.c_str(), "ab");
        logger = std::make_unique<Logger>(file, setup.flush);
    }
    static void on(int i) { statement(info, i); }
    static void off(int i) { statement(debug, i); }
    static void close() { logger->finish(); }
};

}  // namespace

PEER_CONTESTANT(Floor)
