// log_application_test::ScriptedCollector: a log collector that behaves as a test tells it to.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/vek/net/loopback.h"
#include "vek/net/tcp_listener.h"
#include "vek/net/tcp_socket.h"

namespace log_application_test {

// Accepts one connection after the other until it is destroyed. The script serves each; it is
// closed when the script returns.
class ScriptedCollector {
  public:
    // One connection. Reading keeps what was read for the test.
    class Connection {
      public:
        Connection(ScriptedCollector& owner, vek::net::TCPSocket& accepted)
            : collector(owner), socket(accepted) {}

        // Reads once, at most `size` bytes. Returns false at the end of the stream.
        bool readSome(std::uint32_t size = 65'536);

        // Reads until the end of the stream.
        void readAll();

        void send(const std::string& bytes);

        // The connection will be reset when it is closed.
        void resetAtTheEnd();

        // Blocks until the test is over.
        void holdOn() const;

      private:
        ScriptedCollector& collector;
        vek::net::TCPSocket& socket;
    };

    // `number` counts the connections from 0.
    using Script = std::function<void(Connection&, int number)>;

    // Listens on `atPort`; 0 lets the system choose. Winsock must be started.
    explicit ScriptedCollector(Script connectionScript, std::uint16_t atPort = 0);
    ~ScriptedCollector();

    std::string to() const { return "--to syslog+tcp://127.0.0.1:" + std::to_string(port); }

    // The messages of all connections so far, without their frames, in order. A frame that is cut
    // off by the end of its connection isn't one; a wrong frame is a message "wrong frame".
    std::vector<std::string> messages() const;

    // The texts of these messages, each once, in the order of their first arrival. Fails if a
    // number comes with two texts.
    std::vector<std::string> texts() const;

    // Blocks until there are so many texts. Returns false if they don't come in time.
    bool waitForTexts(std::size_t count) const;

    std::uint16_t port = 0;
    std::atomic<int> connections = 0;

  private:
    void serve();

    vek::net::TCPListener listener{false};
    const Script script;
    mutable std::mutex lock;
    std::vector<std::string> streams;  // what each connection brought; guarded by `lock`
    std::atomic<bool> isOver = false;
    std::thread thread;
};

// A collector that reads everything.
inline void readAll(ScriptedCollector::Connection& connection, int /*number*/) {
    connection.readAll();
}

// A port of 127.0.0.1 on which nobody listens.
std::uint16_t freePort();

}  // namespace log_application_test
