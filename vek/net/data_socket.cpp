#include "vek/net/data_socket.h"

#include "vek/exception.h"
#include "vek/net/message_header.h"
#include "vek/net/socket_error.h"
#include "vek/net/winsock.h"

namespace vek::net {

namespace {

// Fills the header's WSAMSG for a call, for the lifetime of this object.
class SystemBuffers {
  public:
    explicit SystemBuffers(MessageHeader& prepared) : header(prepared) {
        if (header.buffers.empty()) {
            throw UsageError("empty vector turned in");
        }
        for (const MessageBuffer& buffer : header.buffers) {
            WSABUF copy = {};
            copy.len = buffer.size;
            copy.buf = static_cast<char*>(buffer.data);
            buffers.push_back(copy);
        }
        header.message = {};
        header.message.lpBuffers = buffers.data();
        header.message.dwBufferCount = static_cast<ULONG>(buffers.size());
        if (header.peer != nullptr) {
            header.message.name = static_cast<sockaddr*>(header.peer->sockaddr);
            header.message.namelen = header.peer->length;
        }
        if (header.controlLength != 0) {
            header.message.Control.buf = static_cast<char*>(header.control);
            header.message.Control.len = header.controlLength;
        }
    }
    ~SystemBuffers() {
        header.message.lpBuffers = nullptr;
        header.message.dwBufferCount = 0;
    }
    SystemBuffers(const SystemBuffers&) = delete;
    SystemBuffers& operator=(const SystemBuffers&) = delete;

  private:
    MessageHeader& header;
    std::vector<WSABUF> buffers;
};

}  // namespace

std::uint32_t DataSocket::receive(void* buffer, std::uint32_t size, Address* sender, bool peek) {
    sockaddr* address = nullptr;
    int length = 0;
    if (sender != nullptr) {
        sender->prepare();
        address = static_cast<sockaddr*>(sender->sockaddr);
        length = sender->length;
    }
    const int received =
        recvfrom(handle, static_cast<char*>(buffer), static_cast<int>(size), peek ? MSG_PEEK : 0,
                 address, sender != nullptr ? &length : nullptr);
    if (received == SOCKET_ERROR) {
        throwSocketError(SocketCall::transfer);
    }
    return static_cast<std::uint32_t>(received);
}

std::uint32_t DataSocket::send(const void* buffer, std::uint32_t size, const Address& receiver) {
    const bool addressed = &receiver != &emptyAddress;
    const int sent = sendto(handle, static_cast<const char*>(buffer), static_cast<int>(size), 0,
                            addressed ? static_cast<const sockaddr*>(receiver.sockaddr) : nullptr,
                            addressed ? receiver.length : 0);
    if (sent == SOCKET_ERROR) {
        throwSocketError(SocketCall::transfer);
    }
    return static_cast<std::uint32_t>(sent);
}

std::uint32_t DataSocket::read(void* buffer, std::uint32_t size) {
    return receive(buffer, size, nullptr, false);
}

std::uint32_t DataSocket::write(const void* buffer, std::uint32_t size) {
    return send(buffer, size, emptyAddress);
}

std::uint32_t DataSocket::receiveFrom(void* buffer, std::uint32_t size, Address& sender) {
    return receive(buffer, size, &sender, false);
}

void DataSocket::sendTo(const void* buffer, std::uint32_t size, const Address& receiver) {
    send(buffer, size, receiver);
}

std::uint32_t DataSocket::receiveMessage(MessageHeader& header) {
    if (header.peer != nullptr) {
        header.peer->prepare();
    }
    const SystemBuffers buffers(header);
    DWORD received = 0;
    if (recvMsgFunction()(handle, &header.message, &received, nullptr, nullptr) == SOCKET_ERROR) {
        throwSocketError(SocketCall::other);
    }
    return received;
}

std::uint32_t DataSocket::receiveMessage(const std::vector<MessageBuffer>& buffers) {
    return receiveMessage(buffers, nullptr);
}

std::uint32_t DataSocket::receiveMessage(const std::vector<MessageBuffer>& buffers, Address* peer) {
    MessageHeader header;
    header.buffers = buffers;
    header.peer = peer;
    return receiveMessage(header);
}

std::uint32_t DataSocket::sendMessage(MessageHeader& header) {
    const SystemBuffers buffers(header);
    DWORD sent = 0;
    if (WSASendMsg(handle, &header.message, 0, &sent, nullptr, nullptr) == SOCKET_ERROR) {
        throwSocketError(SocketCall::other);
    }
    return sent;
}

std::uint32_t DataSocket::sendMessage(const std::vector<MessageBuffer>& buffers) {
    return sendMessage(buffers, emptyAddress);
}

std::uint32_t DataSocket::sendMessage(const std::vector<MessageBuffer>& buffers,
                                      const Address& receiver) {
    MessageHeader header;
    header.buffers = buffers;
    // WSASendMsg only reads it.
    header.peer = &receiver == &emptyAddress ? nullptr : const_cast<Address*>(&receiver);
    return sendMessage(header);
}

}  // namespace vek::net
