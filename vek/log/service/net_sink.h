// vek::log::NetSink: streams messages to a client of the log service, each as one telegram.
//
// The log service makes one for each client that asks for messages. No configuration does.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "vek/log/sink.h"
#include "vek/log/telegram.h"
#include "vek/net/ip4_address.h"

namespace vek::net {
class TCPBuffer;
class TCPSocket;
}  // namespace vek::net

namespace vek::log {

// A client gets everything that the manager dispatches, whatever the format and flags in the
// settings, and renders it itself. Sending blocks: a client that doesn't read holds up all output
// of the log and, once the manager's queue is full, the statements, until it reads again or its
// connection ends. This is deliberate.
class NetSink : public Sink {
  public:
    // Copies `settings`. Takes ownership of the connection, also if it throws, which closes it;
    // `clientBuffer` works on `clientSocket`. Sets TCP_NODELAY. Throws NetError.
    NetSink(const SinkConfig& settings, std::unique_ptr<net::TCPSocket> clientSocket,
            std::unique_ptr<net::TCPBuffer> clientBuffer);

    // Shuts the connection down in both directions and closes it. Ignores failures: the client may
    // be gone.
    ~NetSink() override;

    // sinkNet.
    int type() const override { return sinkNet; }

    // Send `message` as a telegram of type "message". An AttrMessage adds two parameters, its keys
    // and its values, each joined by "|" and not escaped, also if it has no attribute. Throw
    // NetError and NoNetwork if sending fails, which is how the loss of a client is detected, and
    // RuntimeError for a telegram of more than 16380 bytes, which costs the client its connection.
    void store(const AttrMessage& message) override;
    void store(const Message& message) override;

    // "net#" and a number: 0 for the first network sink of the process, and so on. Numbers aren't
    // reused.
    std::string id() const override;

    // The client's address. Calls getpeername; if that fails, since the connection was reset,
    // returns the address as of the construction.
    net::IP4Address peer() const;

  private:
    void fillTelegram(const Message& message);

    const SinkConfig config;
    // In this order: the buffer is destroyed first.
    const std::unique_ptr<net::TCPSocket> socket;
    const std::unique_ptr<net::TCPBuffer> buffer;
    // 0.0.0.0:0 if the client was gone already.
    net::IP4Address initialPeer;
    // Filled anew for each message.
    Telegram telegram;
    const std::int32_t number;
};

}  // namespace vek::log
