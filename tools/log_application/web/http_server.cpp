// The only file that includes the HTTP library, which takes long to compile.
#include "tools/log_application/web/http_server.h"

#include <condition_variable>
#include <memory>
#include <thread>

#include "vek/base/std_mutex.h"
#include "vek/base/windows.h"
// Connections that wait to be accepted.
#define CPPHTTPLIB_LISTEN_BACKLOG 32
// Needs windows.h.
#include <httplib.h>

#include "tools/log_application/program/failure.h"
#include "tools/log_application/web/http_connection.h"
#include "tools/log_application/web/request_head.h"

namespace log_application {

namespace {

constexpr const char* loopback = "127.0.0.1";
constexpr int tooLarge = 431;
constexpr int late = 408;
constexpr int overloaded = 503;

// The page loads nothing from elsewhere, runs no script in its text, and can't be put into a frame.
constexpr const char* contentPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
    "base-uri 'none'; form-action 'none'; frame-ancestors 'none'; "
    "require-trusted-types-for 'script'; trusted-types 'none'";

const httplib::Headers& commonHeaders() {
    static const httplib::Headers headers = {{"Content-Security-Policy", contentPolicy},
                                             {"X-Content-Type-Options", "nosniff"},
                                             {"X-Frame-Options", "DENY"},
                                             {"Referrer-Policy", "no-referrer"},
                                             {"Cross-Origin-Opener-Policy", "same-origin"},
                                             {"Cross-Origin-Resource-Policy", "same-origin"},
                                             {"Cache-Control", "no-store"}};
    return headers;
}

// Sends all of a refusal, if the client takes it, and no more than the status and what to do.
void refuse(HttpConnection& connection, int status) {
    const std::string body = status == overloaded
                                 ? "Too many connections. Close other pages of this program.\n"
                                 : "Refused. Open the address that log_application has printed.\n";
    std::string text = "HTTP/1.1 " + std::to_string(status) + " " +
                       httplib::detail::status_message(status) +
                       "\r\nConnection: close\r\nContent-Type: text/plain; charset=utf-8\r\n"
                       "Content-Length: " +
                       std::to_string(body.size()) + "\r\n";
    for (const auto& [name, value] : commonHeaders()) {
        text += name + ": " + value + "\r\n";
    }
    text += "\r\n" + body;
    for (std::size_t sent = 0; sent < text.size();) {
        const long size = connection.write(text.data() + sent, text.size() - sent);
        if (size < 0) {
            return;
        }
        sent += static_cast<std::size_t>(size);
    }
}

// Lets the library read and write a connection.
class LibraryStream : public httplib::Stream {
  public:
    explicit LibraryStream(HttpConnection& httpConnection) : connection(httpConnection) {}

    bool is_readable() const override { return true; }
    bool is_writable() const override { return true; }
    ssize_t read(char* buffer, std::size_t size) override { return connection.read(buffer, size); }
    ssize_t write(const char* text, std::size_t size) override {
        return connection.write(text, size);
    }
    void get_remote_ip_and_port(std::string& address, int& port) const override {
        address = loopback;
        port = 0;
    }
    void get_local_ip_and_port(std::string& address, int& port) const override {
        address = loopback;
        port = 0;
    }
    socket_t socket() const override { return connection.socket(); }

  private:
    HttpConnection& connection;
};

// A thread for each connection. One too many is served by the accepting thread, which refuses it.
class ConnectionThreads : public httplib::TaskQueue {
  public:
    ConnectionThreads(std::size_t mostThreads, bool& refusingFlag)
        : limit(mostThreads), refusing(refusingFlag) {}

    void enqueue(std::function<void()> serve) override {
        {
            const vek::StdGuard guard(threads->lock);
            refusing = threads->running >= limit;
            threads->running += refusing ? 0 : 1;
        }
        if (!refusing) {
            try {
                std::thread([threads = threads, serve] {
                    serve();
                    const vek::StdGuard guard(threads->lock);
                    --threads->running;
                    threads->ended.notify_all();
                }).detach();
                return;
            } catch (const std::system_error&) {
                const vek::StdGuard guard(threads->lock);
                --threads->running;
                refusing = true;
            }
        }
        serve();
        refusing = false;
    }

    void shutdown() override {
        vek::StdGuard guard(threads->lock);
        while (threads->running != 0) {
            threads->ended.wait(guard.forWait());
        }
    }

  private:
    // Each thread owns a share: the last one may still be unlocking when `shutdown` returns.
    struct Threads {
        vek::StdMutex lock;
        std::condition_variable ended;
        std::size_t running VEK_GUARDED_BY(lock) = 0;
    };

    const std::size_t limit;
    bool& refusing;  // used by the accepting thread alone
    const std::shared_ptr<Threads> threads = std::make_shared<Threads>();
};

}  // namespace

std::string WebRequest::parameter(const std::string& name) const {
    const auto found = parameters.find(name);
    return found == parameters.end() ? "" : found->second;
}

class HttpServer::Server : public httplib::Server {
  public:
    Server(std::uint16_t wantedPort, const std::string& token, HttpServer::Handler webHandler,
           const std::vector<std::string>& postPaths, const WebLimits& webLimits)
        : limits(webLimits), prefix("/" + token + "/"), handler(std::move(webHandler)) {
        access.token = token;
        set_default_headers(commonHeaders());
        set_payload_max_length(longestBody);
        set_idle_interval(0, 200'000);
        set_tcp_nodelay(true);
        // Nobody else can listen on the port too.
        set_socket_options([](socket_t socket) {
            const BOOL on = TRUE;
            setsockopt(socket, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&on),
                       sizeof on);
        });
        new_task_queue = [this] {
            acceptingThread = std::this_thread::get_id();
            return new ConnectionThreads(limits.connections, refusing);
        };
        set_pre_routing_handler([this, postPaths](const auto& request, auto& response) {
            const bool isPostPath = std::ranges::any_of(
                postPaths, [&](const std::string& path) { return request.path == prefix + path; });
            if (request.method == "POST" && isPostPath) {
                return HandlerResponse::Unhandled;  // goes on when the body is read
            }
            if (request.method == "POST" || isPostPath) {
                response.status = 405;
            } else {
                answer(request, response);
            }
            return HandlerResponse::Handled;
        });
        for (const std::string& path : postPaths) {
            Post(prefix + path,
                 [this](const auto& request, auto& response) { answer(request, response); });
        }
        set_exception_handler(
            [](const auto&, auto& response, const auto& /*error*/) { response.status = 500; });
        startListening(wantedPort);
    }

    ~Server() override {
        stopped = true;
        stop();
        listener.join();
    }

    std::uint16_t port() const { return access.port; }

  private:
    void startListening(std::uint16_t wantedPort) {
        const int bound = wantedPort == 0                      ? bind_to_any_port(loopback)
                          : bind_to_port(loopback, wantedPort) ? wantedPort
                                                               : -1;
        if (bound <= 0) {
            throw Failure(
                exitLost,
                "The port " + std::to_string(wantedPort) + " of 127.0.0.1 can't be listened on.",
                "Another program may use it: give another --port, or none for a free one.");
        }
        access.port = static_cast<std::uint16_t>(bound);
        listener = std::thread([this] { listen_after_bind(); });
        while (!is_running()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    // Called by the library for each connection.
    bool process_and_close_socket(socket_t socket) override {
        try {
            HttpConnection connection(socket, limits, stopped);
            if (refusing && std::this_thread::get_id() == acceptingThread) {
                refuse(connection, overloaded);
            } else {
                serve(connection);
            }
        } catch (const std::exception&) {
            // No memory: this connection ends.
        }
        ::shutdown(socket, SD_BOTH);
        closesocket(socket);
        return true;
    }

    void serve(HttpConnection& connection) {
        std::int64_t waitMs = limits.requestMs;
        while (!stopped && serveOne(connection, waitMs)) {
            waitMs = limits.idleMs;
        }
    }

    // Returns whether another request may follow.
    bool serveOne(HttpConnection& connection, std::int64_t waitMs) {
        std::string text;
        switch (connection.readHead(text, waitMs)) {
            case HttpConnection::Outcome::closed:
                return false;
            case HttpConnection::Outcome::tooLarge:
                refuse(connection, tooLarge);
                return false;
            case HttpConnection::Outcome::late:
                refuse(connection, late);
                return false;
            case HttpConnection::Outcome::complete:
                break;
        }
        const RequestHead head = checkRequestHead(text, access);
        if (head.status != 0) {
            refuse(connection, head.status);
            return false;
        }
        connection.startRequest(head.accepted, head.bodyLength);
        LibraryStream stream(connection);
        bool closed = false;
        return process_request(stream, head.closes, closed, nullptr) && !closed &&
               connection.isRead();
    }

    void answer(const httplib::Request& request, httplib::Response& response) const {
        WebRequest own;
        own.method = request.method == "POST" ? "POST" : "GET";
        own.path = request.path.substr(prefix.size());
        own.parameters = {request.params.begin(), request.params.end()};
        own.lastEventId = request.get_header_value("Last-Event-ID");
        const WebResponse result = handler(own);
        response.status = result.status;
        if (!result.stream) {
            response.set_content(result.body, result.type);
            return;
        }
        response.set_chunked_content_provider(
            result.type, [stream = result.stream](std::size_t, httplib::DataSink& sink) {
                bool open = true;
                stream([&](std::string_view text) {
                    open = open && sink.write(text.data(), text.size());
                    return open;
                });
                if (open) {
                    sink.done();
                }
                return open;
            });
    }

    const WebLimits limits;
    const std::string prefix;
    const HttpServer::Handler handler;
    WebAccess access;
    std::atomic<bool> stopped = false;
    bool refusing = false;  // used by the accepting thread alone
    std::thread::id acceptingThread;
    std::thread listener;
};

HttpServer::HttpServer(std::uint16_t port, const std::string& token, Handler handler,
                       const std::vector<std::string>& postPaths, const WebLimits& limits)
    : server(std::make_unique<Server>(port, token, std::move(handler), postPaths, limits)) {}

HttpServer::~HttpServer() = default;

std::uint16_t HttpServer::port() const {
    return server->port();
}

}  // namespace log_application
