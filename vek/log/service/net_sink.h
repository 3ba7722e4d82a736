// vek::log::NetSink: streams messages to a client of the log service, each as one telegram.
//
// No configuration makes one: it exists as long as a client listens, one for each.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "vek/log/sink.h"
#include "vek/log/telegram.h"

namespace vek::net {
class IP4Address;
class TCPBuffer;
class TCPSocket;
}  // namespace vek::net

namespace vek::log {

// A client gets everything that the manager dispatches, whatever the settings' format and flags
// say, and renders it by itself. What is sent blocks as the socket does, so that a client that
// doesn't read holds up all output of the log, and, once the manager's queue is full, the
// statements; until it reads again or its connection ends. This is deliberate.
class NetSink : public Sink {
  public:
    // Copies `settings`. Takes the connection: `clientBuffer` works on `clientSocket`, and nobody
    // else may use the two from now on, also if this throws, which closes it. Lets each write leave
    // at once (TCP_NODELAY). Throws NetError.
    NetSink(const SinkConfig& settings, std::unique_ptr<net::TCPSocket> clientSocket,
            std::unique_ptr<net::TCPBuffer> clientBuffer);

    // Ends the connection in both directions and closes it. What goes wrong there is nobody's
    // concern: the client may be gone.
    ~NetSink() override;

    // sinkNet.
    int type() const override { return sinkNet; }

    // Send `message` as a telegram of type "message". One with attributes has their keys and
    // values, each joined by "|" and not escaped, as two parameters more, also without any
    // attribute. Throw NetError and NoNetwork if sending fails, which is how a client that has gone
    // is noticed, and RuntimeError for a telegram of more than 16380 bytes: that client is lost
    // then.
    void store(const AttrMessage& message) override;
    void store(const Message& message) override;

    // "net#" and a number: 0 for the first network sink of the process, and so on. No number is
    // given twice.
    std::string id() const override;

    // The client's address. Throws NetError if the connection has ended. Stands on getpeername.
    net::IP4Address peer() const;

  private:
    void fillTelegram(const Message& message);

    const SinkConfig config;
    // Behind it, so that the buffer goes first.
    const std::unique_ptr<net::TCPSocket> socket;
    const std::unique_ptr<net::TCPBuffer> buffer;
    // Filled anew for each message.
    Telegram telegram;
    const std::int32_t number;
};

}  // namespace vek::log
