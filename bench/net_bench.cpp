// net_bench: reading frames with TCPBuffer, compared with a bare reader of lengths and bodies. Both
// read bytes that have arrived over loopback already, so only the receiving side is measured.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/measure.h"
#include "vek/net/ip4_address.h"
#include "vek/net/tcp_buffer.h"
#include "vek/net/tcp_listener.h"
#include "vek/net/tcp_socket.h"
#include "vek/net/winsock.h"

namespace {

using namespace vek::net;

constexpr int rounds = 501;
constexpr std::size_t roundBytes = 48000;
constexpr std::uint32_t largeRead = 65536;
constexpr std::uint32_t serviceRead = 1024;

// Keeps the compiler from removing work whose result is never read.
volatile std::size_t seen = 0;

class Connection {
  public:
    Connection() {
        std::uint32_t room = 2 * largeRead;
        IP4Address address;
        address.setAddress(0x7F000001);
        TCPListener listener(false);
        listener.bufferSize(false, false, room);
        listener.bind(address);
        listener.localAddress(address);
        listener.listen(1);
        client.connect(address);
        server = std::make_unique<TCPSocket>(listener.accept());
    }

    // Returns when all of `bytes` can be read.
    void deliver(const std::string& bytes) {
        for (std::size_t sent = 0; sent < bytes.size();) {
            sent +=
                client.write(bytes.data() + sent, static_cast<std::uint32_t>(bytes.size() - sent));
        }
        u_long arrived = 0;
        while (arrived < bytes.size()) {
            ioctlsocket(server->nativeHandle(), static_cast<long>(FIONREAD), &arrived);
        }
    }

    IPSocketT<DataSocket> client{false, streamType, 0};
    std::unique_ptr<TCPSocket> server;
};

// The reader that TCPBuffer is compared with.
class BareReader {
  public:
    BareReader(SOCKET socket, std::uint32_t size) : source(socket), buffer(size) {}

    const char* next(std::uint32_t& length) {
        for (;;) {
            if (end - start >= 4) {
                u_long prefix = 0;
                std::memcpy(&prefix, &buffer[start], sizeof prefix);
                length = ntohl(prefix);
                if (end - start - 4 >= length) {
                    const char* const body = &buffer[start + 4];
                    start += 4 + length;
                    return body;
                }
            }
            std::memmove(buffer.data(), buffer.data() + start, end - start);
            end -= start;
            start = 0;
            const int received =
                recv(source, buffer.data() + end, static_cast<int>(buffer.size() - end), 0);
            if (received <= 0) {
                std::abort();
            }
            end += static_cast<std::size_t>(received);
        }
    }

  private:
    const SOCKET source;
    std::vector<char> buffer;
    std::size_t start = 0;
    std::size_t end = 0;
};

std::string framesOf(std::size_t payloadSize, int count) {
    std::string bytes;
    for (int i = 0; i < count; ++i) {
        const u_long prefix = htonl(static_cast<u_long>(payloadSize));
        bytes.append(reinterpret_cast<const char*>(&prefix), sizeof prefix);
        bytes.append(payloadSize, 'x');
    }
    return bytes;
}

void measure(std::size_t payloadSize, std::uint32_t ownRead, std::uint32_t bareRead,
             double target) {
    Connection ownConnection;
    Connection bareConnection;
    TCPBuffer own(largeRead, ownRead, ownConnection.server.get());
    BareReader bare(bareConnection.server->nativeHandle(), bareRead);
    const int count = static_cast<int>(roundBytes / (payloadSize + 4));
    const std::string bytes = framesOf(payloadSize, count);
    const auto timeOf = [&](Connection& connection, const auto& next) {
        connection.deliver(bytes);
        return vek_bench::nanoseconds([&] {
                   for (int i = 0; i < count; ++i) {
                       std::uint32_t length = 0;
                       seen = static_cast<std::size_t>(next(length)[0]) + length;
                   }
               }) /
               count;
    };
    std::vector<double> ownTimes;
    std::vector<double> bareTimes;
    for (int round = vek_bench::repetitions(rounds, 3); round > 0; --round) {
        ownTimes.push_back(
            timeOf(ownConnection, [&](std::uint32_t& length) { return own.nextMessage(length); }));
        bareTimes.push_back(
            timeOf(bareConnection, [&](std::uint32_t& length) { return bare.next(length); }));
    }
    vek_bench::report({.name = "frames of " + std::to_string(payloadSize) + " bytes, reads of " +
                               std::to_string(ownRead) + ", bare of " + std::to_string(bareRead),
                       .own = 1e9 / vek_bench::median(ownTimes),
                       .other = 1e9 / vek_bench::median(bareTimes),
                       .target = target,
                       .unit = "frames/s",
                       .higherIsBetter = true});
}

void measureAll() {
    startWinsock();
    for (const std::size_t payloadSize : {20u, 76u, 400u, 1000u}) {
        measure(payloadSize, largeRead, largeRead, 0.8);
        measure(payloadSize, serviceRead, serviceRead, 0);
        measure(payloadSize, serviceRead, largeRead, 0);
    }
    stopWinsock();
}

}  // namespace

int main(int argc, char** argv) {
    return vek_bench::runBenchmark(
        argc, argv,
        "net_bench [--smoke] [--json]\n"
        "\n"
        "Frames a second read by TCPBuffer, compared with a bare reader\n"
        "of lengths and bodies.\n",
        measureAll);
}
