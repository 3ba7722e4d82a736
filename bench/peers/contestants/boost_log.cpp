// Boost.Log: asynchronous_sink with a bounded queue that blocks, over text_ostream_backend. The
// caller's thread builds the text with a stream, the worker the line.
#include <fstream>

#include <boost/log/attributes/clock.hpp>
#include <boost/log/attributes/current_thread_id.hpp>
#include <boost/log/core.hpp>
#include <boost/log/expressions.hpp>
#include <boost/log/sinks/async_frontend.hpp>
#include <boost/log/sinks/block_on_overflow.hpp>
#include <boost/log/sinks/bounded_fifo_queue.hpp>
#include <boost/log/sinks/text_ostream_backend.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/log/sources/severity_logger.hpp>
#include <boost/log/support/date_time.hpp>
#include <boost/log/trivial.hpp>
#include <boost/make_shared.hpp>
#include <ext/stdio_filebuf.h>

#include "bench/peers/contestant.h"

namespace {

namespace logging = boost::log;
namespace expressions = boost::log::expressions;

using Severity = logging::trivial::severity_level;
using Sink = logging::sinks::asynchronous_sink<
    logging::sinks::text_ostream_backend,
    logging::sinks::bounded_fifo_queue<peers::queueCapacity, logging::sinks::block_on_overflow>>;
using Source = logging::sources::severity_logger_mt<Severity>;

// A stream on a file that is opened for FILE_APPEND_DATA.
class AppendingStream : public std::ostream {
  public:
    explicit AppendingStream(const std::string& path)
        : std::ostream(nullptr),
          buffer(peers::openDescriptorForAppending(path), std::ios::out | std::ios::binary) {
        rdbuf(&buffer);
    }

  private:
    __gnu_cxx::stdio_filebuf<char> buffer;
};

boost::shared_ptr<Sink> sink;
Source* source;

struct BoostLog {
    static const char* name() { return "Boost.Log"; }
    static void open(const peers::Setup& setup) {
        auto backend = boost::make_shared<logging::sinks::text_ostream_backend>();
        if (setup.appending) {
            backend->add_stream(boost::make_shared<AppendingStream>(setup.file));
        } else {
            backend->add_stream(boost::make_shared<std::ofstream>(
                setup.file, std::ios::out | std::ios::binary | std::ios::app));
        }
        backend->auto_flush(setup.flush);
        sink = boost::make_shared<Sink>(backend);
        sink->set_formatter(
            expressions::stream
            << expressions::format_date_time<boost::posix_time::ptime>("TimeStamp",
                                                                       "%Y-%m-%d %H:%M:%S")
            << " [" << expressions::attr<Severity>("Severity") << "] "
            << expressions::attr<logging::attributes::current_thread_id::value_type>("ThreadID")
            << " " << expressions::smessage);
        auto core = logging::core::get();
        core->add_global_attribute("TimeStamp", logging::attributes::local_clock());
        core->add_global_attribute("ThreadID", logging::attributes::current_thread_id());
        core->set_filter(expressions::attr<Severity>("Severity") >= logging::trivial::info);
        core->add_sink(sink);
        source = new Source;
    }
    static void on(int i) {
        BOOST_LOG_SEV(*source, logging::trivial::info)
            << "request " << i << " from " << peers::host(i) << " took " << peers::milliseconds(i)
            << " ms";
    }
    static void off(int i) {
        BOOST_LOG_SEV(*source, logging::trivial::debug)
            << "request " << i << " from " << peers::host(i) << " took " << peers::milliseconds(i)
            << " ms";
    }
    static void close() {
        logging::core::get()->remove_sink(sink);
        sink->flush();  // writes what is queued
        sink->stop();
        sink.reset();  // closes the file
    }
};

}  // namespace

PEER_CONTESTANT(BoostLog)
