// The log itself. Its file sink always appends and always flushes.
#include "bench/peers/contestant.h"
#include "vek/log/manager.h"
#include "vek/log/sinks/file_sink.h"
#include "vek/log/sinks/message_format.h"
#include "vek/log/statement.h"
#include "vek/time/clock_source.h"

namespace {

vek::log::Logger* logger = nullptr;

struct Own {
    static const char* name() { return "own"; }
    static void open(const peers::Setup& setup) {
        vek::time::initClocks();
        vek::log::FileSinkConfig config(setup.file);
        config.enabled = true;
        config.compress_archives = false;
        config.format = vek::log::compileFormat("{date} [{level}] {tid} {msg}");
        vek::log::Manager& manager = vek::log::Manager::instance();
        logger = manager.getLogger("bench");
        manager.addSink(new vek::log::FileSink(config));
        manager.start();
    }
    static void on(int i) {
        VEK_LOG(*logger, vek::log::INFO,
                "request " << i << " from " << peers::host(i) << " took " << peers::milliseconds(i)
                           << " ms");
    }
    static void off(int i) {
        VEK_LOG(*logger, vek::log::DEBUG,
                "request " << i << " from " << peers::host(i) << " took " << peers::milliseconds(i)
                           << " ms");
    }
    static void close() { vek::log::Manager::instance().shutdown(); }
};

}  // namespace

PEER_CONTESTANT(Own)
