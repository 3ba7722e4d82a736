// log_application_test::ScriptedServer: a server that says what a test has it say, right or wrong.
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

// One client after the other, each served by the script until that returns; then it is closed.
class ScriptedServer {
  public:
    // The connection as the script sees it: bare bytes.
    class Peer {
      public:
        explicit Peer(vek::net::TCPSocket& connection) : socket(connection) {}

        // The payload of the next frame; empty at the end of the stream.
        std::string request();

        void sendBytes(const std::string& bytes);
        void sendFrame(const std::string& payload);

        // Blocks until the client goes, for up to 20 seconds.
        void waitForEnd();

      private:
        vek::net::TCPSocket& socket;
    };

    using Script = std::function<void(Peer&)>;

    // Serves `clients` clients. Winsock has to be started.
    explicit ScriptedServer(Script peerScript, int clients = 1);

    // Waits until the clients that came have been served.
    ~ScriptedServer();

    // Takes no further client than the one it has; ends within a second.
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
