// log_application_test::ScriptedServer: a server whose answers, right or wrong, a test scripts.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>

#include "tests/vek/net/loopback.h"
#include "vek/net/tcp_listener.h"
#include "vek/net/tcp_socket.h"

namespace log_application_test {

// Accepts one client after the other. The script serves a client; its connection is closed when the
// script returns.
class ScriptedServer {
  public:
    // The connection of a client.
    class Peer {
      public:
        explicit Peer(vek::net::TCPSocket& connection) : socket(connection) {}

        // Blocks for the next frame. Returns its payload; empty at the end of the stream.
        std::string request();

        void sendBytes(const std::string& bytes);
        void sendFrame(const std::string& payload);

        // Blocks until the client has closed the connection, for up to ToolRun::limitMs.
        void waitForEnd();

      private:
        vek::net::TCPSocket& socket;
    };

    using Script = std::function<void(Peer&)>;

    // Serves `clients` clients on a thread of its own. Winsock must be started.
    explicit ScriptedServer(Script peerScript, int clients = 1);

    // Blocks until the connected clients have been served.
    ~ScriptedServer();

    // Accepts no further client. The thread ends within a second.
    void stop() { stopped = true; }

    std::string connect() const { return "--connect 127.0.0.1:" + std::to_string(port); }

    std::uint16_t port = 0;

  private:
    void serve(int clients);
    bool waitForClient();

    vek::net::TCPListener listener{false};
    const Script script;
    std::atomic<bool> stopped = false;
    std::thread thread;
};

// The frame of `payload`.
std::string frameOf(const std::string& payload);

// A telegram of a message: its fields in their order, each as "key=value" or a bare key.
std::string messageTelegram(const std::string& text, int number = 0,
                            const std::string& level = "INFO", const std::string& logger = "demo",
                            std::int64_t when = 1'700'000'000'123);

}  // namespace log_application_test
