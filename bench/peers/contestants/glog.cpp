// glog, which has no queue: the caller's thread formats and writes under a lock.
#include <glog/logging.h>

#include "bench/peers/contestant.h"

namespace {

// Like glog's own log file, but opened for FILE_APPEND_DATA.
class AppendingLogger : public google::base::Logger {
  public:
    explicit AppendingLogger(const std::string& path) : file(peers::openForAppending(path)) {}
    ~AppendingLogger() override { std::fclose(file); }

    void Write(bool flush, time_t, const char* text, std::size_t size) override {
        std::fwrite(text, 1, size, file);
        if (flush) {
            std::fflush(file);
        }
    }
    void Flush() override { std::fflush(file); }
    google::uint32 LogSize() override { return 0; }

  private:
    std::FILE* const file;
};

struct Glog {
    static const char* name() { return "glog"; }
    static void open(const peers::Setup& setup) {
        FLAGS_logtostderr = false;
        FLAGS_alsologtostderr = false;
        FLAGS_stderrthreshold = google::GLOG_FATAL;
        FLAGS_minloglevel = google::GLOG_INFO;
        FLAGS_timestamp_in_logfile_name = false;
        FLAGS_v = 0;
        FLAGS_max_log_size = 4095;  // no rotation
        FLAGS_logbufsecs = 30;
        FLAGS_logbuflevel = setup.flush ? -1 : 0;
        google::InitGoogleLogging("bench");
        if (setup.appending) {
            google::base::SetLogger(google::GLOG_INFO, new AppendingLogger(setup.file));
        } else {
            google::SetLogDestination(google::GLOG_INFO, setup.file.c_str());
            google::SetLogSymlink(google::GLOG_INFO, "");
        }
    }
    static void on(int i) {
        LOG(INFO) << "request " << i << " from " << peers::host(i) << " took "
                  << peers::milliseconds(i) << " ms";
    }
    static void off(int i) {
        VLOG(1) << "request " << i << " from " << peers::host(i) << " took "
                << peers::milliseconds(i) << " ms";
    }
    static void close() {
        google::FlushLogFiles(google::GLOG_INFO);
        google::ShutdownGoogleLogging();
    }
};

}  // namespace

PEER_CONTESTANT(Glog)
