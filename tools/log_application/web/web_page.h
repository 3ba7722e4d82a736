// log_application::WebPage: answers the requests of the page.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "tools/log_application/web/event_stream.h"
#include "tools/log_application/web/http_server.h"

namespace log_application {

// Thread-safe.
//
// GET of a file's name gives the file, GET "events" an EventStream. POST "level" changes a level:
// "process" is its number, "logger" a name or missing for the default level, "level" a level, and
// "seconds" the time after which the earlier one is put back, or missing for good. POST "back" puts
// the level of "process" and "logger" back now. Both answer 200, or 409 and a text that says why
// not.
class WebPage : public vek::NoCopy {
  public:
    // Streams at once. Each has a thread with a deep stack.
    static constexpr int mostStreams = 6;

    // The paths that take a POST.
    static const std::vector<std::string> postPaths;

    explicit WebPage(const WebSources& webSources) : sources(webSources) {}

    WebResponse answer(const WebRequest& request);

  private:
    WebResponse stream(const WebRequest& request);
    void change(const WebRequest& request);

    const WebSources sources;
    std::atomic<int> streams = 0;
};

}  // namespace log_application
