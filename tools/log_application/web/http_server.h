// log_application::HttpServer: serves one page's requests on the loopback address.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vek/base/no_copy.h"

namespace log_application {

// A request that `checkRequestHead` has let through.
struct WebRequest {
    std::string method;  // "GET" or "POST"; a HEAD is a GET whose body isn't sent
    std::string path;    // behind the token and its slash
    std::multimap<std::string, std::string> parameters;  // of the query and of the form
    std::string lastEventId;

    // The first value of the parameter, or an empty text.
    std::string parameter(const std::string& name) const;
};

// Sends a part of a body. Returns false once the client has gone or takes nothing any more.
using BodyWriter = std::function<bool(std::string_view)>;

struct WebResponse {
    int status = 200;
    std::string type = "text/plain; charset=utf-8";
    std::string body;
    // If set, it writes the body in place of `body`, on the connection's thread.
    std::function<void(const BodyWriter&)> stream;
};

struct WebLimits {
    std::size_t connections = 32;   // at once; further ones get the status 503
    std::int64_t requestMs = 5000;  // until a request has arrived as a whole
    std::int64_t idleMs = 15'000;   // between two requests on a connection
    std::int64_t writeMs = 10'000;  // until the client takes any byte
};

// Serves each connection on a thread of its own.
class HttpServer : public vek::NoCopy {
  public:
    // Thread-safe. An exception becomes the status 500.
    using Handler = std::function<WebResponse(const WebRequest&)>;

    // Listens on `port` of 127.0.0.1, 0 for a free one. Requests need `token` in their path; the
    // paths of `postPaths` take a POST, all others a GET. Winsock must be started. Throws Failure
    // (exitLost) if the port can't be listened on.
    HttpServer(std::uint16_t port, const std::string& token, Handler handler,
               const std::vector<std::string>& postPaths, const WebLimits& limits = {});

    // Accepts nothing more, and blocks until all connections have ended: streams must have been
    // asked to.
    ~HttpServer();

    std::uint16_t port() const;

  private:
    class Server;
    std::unique_ptr<Server> server;
};

}  // namespace log_application
