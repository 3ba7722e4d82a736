// The log as a contestant beside other logging libraries: built with their driver (contestant.h)
// and measured by the same script, in the same run.
#include "contestant.h"
#include "vek/log/manager.h"
#include "vek/log/sinks/file_sink.h"
#include "vek/log/sinks/message_format.h"
#include "vek/log/statement.h"
#include "vek/time/clock_source.h"

namespace {

struct VekLog {
    static constexpr const char* name = "vek::log";
    static constexpr const char* note = "file sink; it flushes after every message, asked or not";

    static inline vek::log::Logger* logger = nullptr;

    static void init(const bench::Config& settings) {
        vek::time::initClocks();
        vek::log::FileSinkConfig config(settings.file);
        config.enabled = true;
        config.compress_archives = false;
        config.format = vek::log::compileFormat("{date} [{level}] {tid} {msg}");
        vek::log::Manager& manager = vek::log::Manager::instance();
        logger = manager.getLogger("bench");
        manager.addSink(new vek::log::FileSink(config));
        manager.start();
    }
    static void log_enabled(int i) {
        VEK_LOG(
            *logger, vek::log::INFO,
            "request " << i << " from " << bench::host(i) << " took " << bench::took(i) << " ms");
    }
    static void log_disabled(int i) {
        VEK_LOG(
            *logger, vek::log::DEBUG,
            "request " << i << " from " << bench::host(i) << " took " << bench::took(i) << " ms");
    }
    static void flush_and_stop() { vek::log::Manager::instance().shutdown(); }
};

}  // namespace

BENCH_CONTESTANT(VekLog)
