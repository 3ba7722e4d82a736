// The part of Telegram that works on a connection.
#include <iostream>

#include "vek/log/telegram.h"
#include "vek/net/tcp_buffer.h"

namespace vek::log {

namespace {

const std::string ackKey = "ack";
const std::string errorKey = "error";

}  // namespace

net::TCPBuffer& Telegram::connection() const {
    if (buffer == nullptr) {
        throw UsageError("a telegram without a connection can't be sent or received");
    }
    return *buffer;
}

bool Telegram::receive() {
    params.clear();
    type.clear();
    std::uint32_t length = 0;
    const char* const payload = connection().nextMessage(length);
    if (payload == nullptr) {
        closed = true;
        return false;
    }
    parse(std::string_view(payload, length));
    return true;
}

void Telegram::send() {
    net::TCPBuffer& stream = connection();
    const std::size_t size = textSize();
    // If there is no room, `commit` throws.
    if (size <= stream.maxPayload()) {
        writeText(stream.sendPayload());
    }
    stream.commit(static_cast<std::uint32_t>(size));
}

void Telegram::sendAck() {
    Telegram reply(buffer);
    reply.type = type;
    reply.addParam(ackKey, "");
    reply.send();
}

void Telegram::sendError(const std::string& text) {
    Telegram reply(buffer);
    reply.type = type;
    reply.addParam(errorKey, text);
    reply.send();
}

bool Telegram::waitForAck() {
    Telegram reply(buffer);
    if (!reply.receive()) {
        return false;
    }
    if (reply.type != type) {
        std::cerr << "Got '" << reply.type << "' instead of Ack" << std::endl;
        return false;
    }
    if (reply.params.size() != 1) {
        std::cerr << "Got " << reply.params.size() << " parameters instead of one" << std::endl;
        return false;
    }
    if (reply.hasParam(ackKey)) {
        return true;
    }
    if (reply.hasParam(errorKey)) {
        throw LogicalError(reply.param(errorKey));
    }
    std::cerr << "Got unexpected reply waiting for ACK" << std::endl;
    return false;
}

}  // namespace vek::log
