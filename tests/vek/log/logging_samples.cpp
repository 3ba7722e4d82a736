// The samples of docs/logging.md. logging_samples_test holds each block of code there against this
// file, and runs them.
#include "tests/vek/log/logging_samples.h"

#include <atomic>
#include <cstdint>

#include "vek/exception.h"
#include "vek/log/configurator.h"
#include "vek/log/manager.h"
#include "vek/log/sinks/file_sink.h"
#include "vek/log/sinks/stdout_sink.h"
#include "vek/log/statement.h"
#include "vek/pal.h"

namespace samples {

void logInAProgram() {
    const vek::VekPal pal(false, 0, 0, nullptr);
    vek::log::Configurator configurator(nullptr);
    configurator.configure("my-program");

    vek::log::Logger& logger = *vek::log::Manager::instance().getLogger("STARTUP");
    VEK_LOG(logger, vek::log::WARN, "only " << 3 << " of " << 4 << " disks found");
}

void writeStatements() {
    vek::log::Logger& logger = *vek::log::Manager::instance().getLogger("COPY");
    const std::uint32_t status = 0x80070020;

    VEK_LOG(logger, vek::log::INFO, "status 0x" << std::hex << status << std::dec);
    logger.logf(vek::log::INFO, "status 0x%08x", status);
    logger.emit(vek::log::INFO, "a text that is ready");
}

void setLevels() {
    vek::log::Manager& manager = vek::log::Manager::instance();
    manager.setDefaultLevel(vek::log::WARN);
    manager.setLoggerLevel("NET", vek::log::TRACE);
    manager.setLoggerLevel("COPY", vek::log::DEFAULT);
}

void logAttributes() {
    vek::log::Logger& logger = *vek::log::Manager::instance().getLogger("UPDATE");
    if (vek::log::AttrMessage* const message =
            logger.makeAttrMessage(vek::log::WARN, "the update was taken back")) {
        message->attrs["version"] = "2.1";
        message->attrs["service"] = "tolmar";
        logger.submit(message);
    }
}

void addAFile(const std::string& path) {
    vek::log::FileSinkConfig config(path);
    config.enabled = true;
    config.rotate = true;
    config.rotate_size = 1024;
    config.max_archives = 5;
    config.format = vek::log::compileFormat("{date} [{level}] {category}: {msg}");
    vek::log::Manager::instance().addSink(new vek::log::FileSink(config));
}

std::atomic<int> errors = 0;

class ErrorCounter : public vek::log::Sink {
  public:
    ErrorCounter() : Sink(config) {
        config.enabled = true;
        config.max_level = vek::log::ERR;
    }
    int type() const override { return vek::log::sinkStdout; }
    std::string id() const override { return "counter"; }
    using Sink::store;
    void store(const vek::log::Message&) override { ++errors; }

  private:
    vek::log::SinkConfig config;
};

void countErrors() {
    vek::log::Manager::instance().addSink(new ErrorCounter);
}

int errorsCounted() {
    return errors;
}

}  // namespace samples
