// vek::net::DataSocket: a socket that data goes through.
#pragma once

#include <cstdint>
#include <vector>

#include "vek/fs/stream.h"
#include "vek/net/socket.h"

namespace vek::net {

struct MessageBuffer;
struct MessageHeader;

// Calls with a `size`, in bytes, throw NoNetwork for WSAENETDOWN and NetError for any other
// failure. The system refuses a size beyond 2147483647.
class DataSocket : public IInOut, public Socket {
  public:
    using Socket::Socket;

    // Waits for data. The result is the number of bytes received, 0 when the peer has closed. A
    // datagram that is larger than `size` is lost and throws NetError. Stands on recvfrom.
    std::uint32_t read(void* buffer, std::uint32_t size) override;

    // A socket gathers nothing: it holds nothing back, and beginning and ending a batch do nothing.
    virtual bool holdsBack() const { return false; }
    virtual void beginBatch() {}
    virtual void endBatch() {}

    // The result is the number of bytes sent, which may be fewer than `size`. Stands on sendto.
    std::uint32_t write(const void* buffer, std::uint32_t size) override;

    // As `read`, and stores the sender in `sender`, which has to have room for it and keeps its
    // length.
    std::uint32_t receiveFrom(void* buffer, std::uint32_t size, Address& sender);

    // Sends to `receiver`; with `emptyAddress` to the peer of the connection. Stands on sendto.
    void sendTo(const void* buffer, std::uint32_t size, const Address& receiver);

    // Receive one message into several buffers, which are filled one behind the other. The result
    // is the number of bytes received. `peer`, which may be null, takes the sender and keeps its
    // length. Throw UsageError if there is no buffer, and otherwise NetError for any failure. Stand
    // on WSARecvMsg.
    std::uint32_t receiveMessage(MessageHeader& header);
    std::uint32_t receiveMessage(const std::vector<MessageBuffer>& buffers);
    std::uint32_t receiveMessage(const std::vector<MessageBuffer>& buffers, Address* peer);

    // Send several buffers as one message, to the peer of the connection or to `receiver`. The
    // result is the number of bytes sent. Throw as the former. Stand on WSASendMsg.
    std::uint32_t sendMessage(const std::vector<MessageBuffer>& buffers);
    std::uint32_t sendMessage(const std::vector<MessageBuffer>& buffers, const Address& receiver);

  protected:
    // What `read` and `receiveFrom` share. `sender` may be null; with `peek` the data stays.
    std::uint32_t receive(void* buffer, std::uint32_t size, Address* sender, bool peek);

  private:
    std::uint32_t send(const void* buffer, std::uint32_t size, const Address& receiver);
    std::uint32_t sendMessage(MessageHeader& header);
};

}  // namespace vek::net
