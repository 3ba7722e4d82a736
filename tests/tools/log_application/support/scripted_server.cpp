#include "tests/tools/log_application/support/scripted_server.h"

#include <utility>

#include "tests/tools/log_application/support/tool_run.h"

namespace log_application_test {

namespace {

// The clients of a test come within this time, in seconds.
constexpr int clientLimit = ToolRun::limitMs / 1000;

}  // namespace

std::string frameOf(const std::string& payload) {
    const auto size = static_cast<std::uint32_t>(payload.size());
    std::string frame;
    for (int shift = 24; shift >= 0; shift -= 8) {
        frame += static_cast<char>(size >> shift & 0xFF);
    }
    return frame + payload;
}

std::string messageTelegram(const std::string& text, int number, const std::string& level,
                            const std::string& logger, std::int64_t when) {
    return "message:agent=" + logger + "\x1Fmsg=" + text + "\x1Fpid=4242\x1Fscope=" + level +
           "\x1Ftid=" + std::to_string(77 + number) + "\x1Fwhen=" + std::to_string(when);
}

std::string ScriptedServer::Peer::request() {
    const auto exactly = [this](std::size_t size) {
        std::string bytes(size, '\0');
        for (std::size_t received = 0; received < size;) {
            const std::uint32_t count =
                socket.read(&bytes[received], static_cast<std::uint32_t>(size - received));
            if (count == 0) {
                return std::string();
            }
            received += count;
        }
        return bytes;
    };
    const std::string prefix = exactly(4);
    std::size_t size = 0;
    for (const char byte : prefix) {
        size = size << 8 | static_cast<unsigned char>(byte);
    }
    return exactly(size);
}

void ScriptedServer::Peer::sendBytes(const std::string& bytes) {
    for (std::size_t sent = 0; sent < bytes.size();) {
        sent += socket.write(bytes.data() + sent, static_cast<std::uint32_t>(bytes.size() - sent));
    }
}

void ScriptedServer::Peer::sendFrame(const std::string& payload) {
    sendBytes(frameOf(payload));
}

void ScriptedServer::Peer::waitForEnd() {
    char byte = 0;
    while (socket.read(&byte, 1) != 0) {
    }
}

ScriptedServer::ScriptedServer(Script peerScript, int clients) : script(std::move(peerScript)) {
    port = vek::test::bindToLoopback(listener).port();
    listener.listen(8);
    thread = std::thread(&ScriptedServer::serve, this, clients);
}

ScriptedServer::~ScriptedServer() {
    thread.join();
}

bool ScriptedServer::waitForClient() {
    for (int i = 0; i < clientLimit && !stopped; ++i) {
        vek::net::SocketSet waiting;
        waiting.add(listener.nativeHandle());
        if (vek::net::Socket::select(&waiting, nullptr, nullptr, 1000)) {
            return true;
        }
    }
    return false;
}

void ScriptedServer::serve(int clients) {
    for (int i = 0; i < clients; ++i) {
        if (!waitForClient()) {
            return;
        }
        vek::net::TCPSocket socket(listener.accept());
        vek::test::limitReceiving(socket, ToolRun::limitMs);
        Peer peer(socket);
        try {
            script(peer);
        } catch (const vek::Exception&) {
            // The client has gone.
        }
        if (i + 1 == clients) {
            listener.close();
        }
    }
}

}  // namespace log_application_test
