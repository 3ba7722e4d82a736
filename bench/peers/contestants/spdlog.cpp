// spdlog, asynchronous: a queue that blocks, one worker. The text is formatted by the caller's
// thread, the line by the worker.
#include <spdlog/async.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include "bench/peers/contestant.h"

namespace {

// Like basic_file_sink_mt, on a file that is opened for FILE_APPEND_DATA.
class AppendingSink : public spdlog::sinks::base_sink<std::mutex> {
  public:
    explicit AppendingSink(const std::string& path) : file(peers::openForAppending(path)) {}
    ~AppendingSink() override { std::fclose(file); }

  protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        std::fwrite(line.data(), 1, line.size(), file);
    }
    void flush_() override { std::fflush(file); }

  private:
    std::FILE* const file;
};

std::shared_ptr<spdlog::details::thread_pool> pool;
std::shared_ptr<spdlog::logger> logger;

struct Spdlog {
    static const char* name() { return "spdlog"; }
    static void open(const peers::Setup& setup) {
        pool = std::make_shared<spdlog::details::thread_pool>(peers::queueCapacity, 1);
        std::shared_ptr<spdlog::sinks::sink> sink;
        if (setup.appending) {
            sink = std::make_shared<AppendingSink>(setup.file);
        } else {
            sink = std::make_shared<spdlog::sinks::basic_file_sink_mt>(setup.file);
        }
        logger = std::make_shared<spdlog::async_logger>("bench", sink, pool,
                                                        spdlog::async_overflow_policy::block);
        logger->set_level(spdlog::level::info);
        logger->set_pattern("%Y-%m-%d %H:%M:%S [%l] %t %v", spdlog::pattern_time_type::local);
        logger->flush_on(setup.flush ? spdlog::level::trace : spdlog::level::off);
    }
    static void on(int i) {
        logger->info("request {} from {} took {} ms", i, peers::host(i), peers::milliseconds(i));
    }
    static void off(int i) {
        logger->debug("request {} from {} took {} ms", i, peers::host(i), peers::milliseconds(i));
    }
    static void close() {
        // The pool's destructor empties the queue and joins the worker.
        pool.reset();
        logger.reset();
    }
};

}  // namespace

PEER_CONTESTANT(Spdlog)
