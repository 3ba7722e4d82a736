// log4cplus: AsyncAppender, a queue that blocks and one worker, over FileAppender. The caller's
// thread builds the text with a stream.
#include <ext/stdio_filebuf.h>
#include <log4cplus/asyncappender.h>
#include <log4cplus/fileappender.h>
#include <log4cplus/initializer.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>
#include <log4cplus/spi/loggingevent.h>

#include "bench/peers/contestant.h"

namespace {

// Like FileAppender, on a file that is opened for FILE_APPEND_DATA.
class AppendingAppender : public log4cplus::Appender {
  public:
    AppendingAppender(const std::string& path, bool flushEach)
        : buffer(peers::openDescriptorForAppending(path), std::ios::out | std::ios::binary),
          stream(&buffer),
          flush(flushEach) {}
    ~AppendingAppender() override { destructorImpl(); }
    void close() override {
        stream.flush();
        closed = true;
    }

  protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override {
        layout->formatAndAppend(stream, event);
        if (flush) {
            stream.flush();
        }
    }

  private:
    __gnu_cxx::stdio_filebuf<char> buffer;
    std::ostream stream;
    const bool flush;
};

log4cplus::Initializer* initializer;
log4cplus::Logger logger;
log4cplus::SharedAppenderPtr async;

struct Log4cplus {
    static const char* name() { return "log4cplus"; }
    static void open(const peers::Setup& setup) {
        initializer = new log4cplus::Initializer;
        log4cplus::SharedAppenderPtr file;
        if (setup.appending) {
            file = new AppendingAppender(setup.file, setup.flush);
        } else {
            file = new log4cplus::FileAppender(setup.file, std::ios_base::app, setup.flush);
        }
        file->setLayout(
            std::make_unique<log4cplus::PatternLayout>("%D{%Y-%m-%d %H:%M:%S} [%p] %t %m%n"));
        async = new log4cplus::AsyncAppender(file, unsigned(peers::queueCapacity));
        logger = log4cplus::Logger::getInstance("bench");
        logger.addAppender(async);
        logger.setLogLevel(log4cplus::INFO_LOG_LEVEL);
        logger.setAdditivity(false);
    }
    static void on(int i) {
        LOG4CPLUS_INFO(logger, "request " << i << " from " << peers::host(i) << " took "
                                          << peers::milliseconds(i) << " ms");
    }
    static void off(int i) {
        LOG4CPLUS_DEBUG(logger, "request " << i << " from " << peers::host(i) << " took "
                                           << peers::milliseconds(i) << " ms");
    }
    static void close() {
        logger.removeAllAppenders();
        async->close();  // empties the queue and joins the worker
        async = nullptr;
    }
};

}  // namespace

PEER_CONTESTANT(Log4cplus)
