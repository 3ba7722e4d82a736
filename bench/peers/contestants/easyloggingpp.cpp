// Easylogging++, which has no queue: the caller's thread formats and writes under a lock.
#include <easylogging++.cc>
// Its header defines names that others use, so it comes first and the source file is compiled here.
#include "bench/peers/contestant.h"

INITIALIZE_EASYLOGGINGPP

namespace {

std::FILE* appendingFile = nullptr;
bool flushEach = false;

// Writes to a file that is opened for FILE_APPEND_DATA. Easylogging++ calls it under its own lock.
class AppendingCallback : public el::LogDispatchCallback {
  protected:
    void handle(const el::LogDispatchData* data) override {
        if (data->dispatchAction() != el::base::DispatchAction::NormalLog) {
            return;
        }
        const el::LogMessage& message = *data->logMessage();
        const std::string line = message.logger()->logBuilder()->build(&message, true);
        const std::lock_guard<std::mutex> guard(mutex);
        std::fwrite(line.data(), 1, line.size(), appendingFile);
        if (flushEach) {
            std::fflush(appendingFile);
        }
    }

  private:
    std::mutex mutex;
};

struct Easyloggingpp {
    static const char* name() { return "Easylogging++"; }
    static void open(const peers::Setup& setup) {
        flushEach = setup.flush;
        el::Configurations settings;
        settings.setToDefault();
        settings.setGlobally(el::ConfigurationType::Format,
                             "%datetime{%Y-%M-%d %H:%m:%s} [%level] %thread %msg");
        settings.setGlobally(el::ConfigurationType::ToStandardOutput, "false");
        settings.setGlobally(el::ConfigurationType::ToFile, setup.appending ? "false" : "true");
        if (!setup.appending) {
            settings.setGlobally(el::ConfigurationType::Filename, setup.file);
        }
        settings.set(el::Level::Debug, el::ConfigurationType::Enabled, "false");
        if (setup.flush) {
            el::Loggers::addFlag(el::LoggingFlag::ImmediateFlush);
        }
        el::Loggers::reconfigureLogger("default", settings);
        if (setup.appending) {
            appendingFile = peers::openForAppending(setup.file);
            el::Helpers::uninstallLogDispatchCallback<el::base::DefaultLogDispatchCallback>(
                "DefaultLogDispatchCallback");
            el::Helpers::installLogDispatchCallback<AppendingCallback>("AppendingCallback");
        }
    }
    static void on(int i) {
        LOG(INFO) << "request " << i << " from " << peers::host(i) << " took "
                  << peers::milliseconds(i) << " ms";
    }
    static void off(int i) {
        LOG(DEBUG) << "request " << i << " from " << peers::host(i) << " took "
                   << peers::milliseconds(i) << " ms";
    }
    static void close() {
        el::Loggers::flushAll();
        if (appendingFile != nullptr) {
            std::fclose(appendingFile);
        }
    }
};

}  // namespace

PEER_CONTESTANT(Easyloggingpp)
