#include "vek/log/service/net_sink.h"

#include <atomic>
#include <utility>

#include "vek/exception.h"
#include "vek/net/tcp_buffer.h"
#include "vek/net/tcp_socket.h"

namespace vek::log {

namespace {

std::atomic<std::int32_t> nextNumber = 0;

constexpr char attributeSeparator = '|';

}  // namespace

NetSink::NetSink(const SinkConfig& settings, std::unique_ptr<net::TCPSocket> clientSocket,
                 std::unique_ptr<net::TCPBuffer> clientBuffer)
    : Sink(config),
      config(settings),
      socket(std::move(clientSocket)),
      buffer(std::move(clientBuffer)),
      telegram(buffer.get()),
      number(nextNumber++) {
    telegram.type = "message";
    initialPeer = peer();
    socket->setNoDelay();
}

NetSink::~NetSink() {
    try {
        socket->shutdown(true, true);
        socket->close();
    } catch (const Exception&) {
        // The peer may be gone.
    }
}

void NetSink::store(const Message& message) {
    if (!socket->isOpen()) {
        return;
    }
    fillTelegram(message);
    telegram.send();
}

void NetSink::store(const AttrMessage& message) {
    if (!socket->isOpen()) {
        return;
    }
    fillTelegram(message);
    std::string keys;
    std::string values;
    bool isFirst = true;
    for (const auto& [key, value] : message.attrs) {
        if (!isFirst) {
            keys += attributeSeparator;
            values += attributeSeparator;
        }
        isFirst = false;
        keys += key;
        values += value;
    }
    telegram.addParam("attr_keys", keys);
    telegram.addParam("attr_values", values);
    telegram.send();
}

void NetSink::fillTelegram(const Message& message) {
    telegram.clearParams();
    telegram.addParam("agent", message.category);
    telegram.addParam("msg", message.text);
    telegram.addParam("pid", std::int64_t{message.pid});
    telegram.addParam("scope", levelName(message.level));
    telegram.addParam("tid", std::int64_t{message.tid});
    telegram.addParam("when", message.timestamp.getValue());
}

std::string NetSink::id() const {
    return "net#" + std::to_string(number);
}

net::IP4Address NetSink::peer() const {
    try {
        net::IP4Address address;
        socket->peerAddress(address);
        return address;
    } catch (const Exception&) {
        return initialPeer;
    }
}

}  // namespace vek::log
