// log_application_test::ScriptedDiscovery: answers discovery requests as a test tells it to.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "tests/vek/net/loopback.h"
#include "vek/net/udp_socket.h"

namespace log_application_test {

// Answers each datagram with what `makeReply` returns, on a thread of its own until destruction.
class ScriptedDiscovery {
  public:
    explicit ScriptedDiscovery(std::function<std::string(const std::string& id)> makeReply) {
        port = vek::test::bindToLoopback(socket).port();
        const DWORD limitMs = 100;
        socket.setOption(SOL_SOCKET, SO_RCVTIMEO, &limitMs, sizeof limitMs);
        thread = std::thread([this, makeReply] {
            while (!ended) {
                answer(makeReply);
            }
        });
    }

    ~ScriptedDiscovery() {
        ended = true;
        thread.join();
    }

    std::string host() const { return "--host 127.0.0.1:" + std::to_string(port); }

    std::atomic<int> requests = 0;
    std::uint16_t port = 0;

  private:
    void answer(const std::function<std::string(const std::string& id)>& makeReply) {
        std::string room(1024, '\0');
        vek::net::IP4Address sender;
        try {
            room.resize(socket.receiveFrom(room.data(), 1024, sender));
            ++requests;
            const std::string reply = makeReply(room.substr(room.find('=') + 1));
            socket.sendTo(reply.data(), static_cast<std::uint32_t>(reply.size()), sender);
        } catch (const vek::NetError&) {
            // Nothing came.
        }
    }

    vek::net::UDPSocket socket{false};
    std::atomic<bool> ended = false;
    std::thread thread;
};

// The answer of the process 4242 to the search `id`.
inline std::string helloOf(const std::string& id, const std::string& name, int port = 49731) {
    return "hello:id=" + id + "\x1Fname=" + name +
           "\x1Fpid=4242\x1Ftcpport=" + std::to_string(port);
}

}  // namespace log_application_test
