// vek::net::DataSocket: a socket that sends and receives data.
#pragma once

#include <cstdint>
#include <vector>

#include "vek/fs/stream.h"
#include "vek/net/socket.h"

namespace vek::net {

struct MessageBuffer;
struct MessageHeader;

// Sizes are in bytes; Winsock refuses a size above 2147483647. Operations that take a `size` throw
// NoNetwork for WSAENETDOWN and NetError for any other failure.
class DataSocket : public IInOut, public Socket {
  public:
    using Socket::Socket;

    // Blocks until data arrives. Returns the number of bytes received, or 0 once the peer has
    // closed its side. For a datagram larger than `size` throws NetError (WSAEMSGSIZE); the
    // datagram is lost. Calls recvfrom.
    std::uint32_t read(void* buffer, std::uint32_t size) override;

    // A socket doesn't buffer: `holdsBack` returns false, the other two do nothing.
    virtual bool holdsBack() const { return false; }
    virtual void beginBatch() {}
    virtual void endBatch() {}

    // Blocks while the send buffer is full. Returns the number of bytes sent, which may be fewer
    // than `size`. Calls sendto.
    std::uint32_t write(const void* buffer, std::uint32_t size) override;

    // As `read`, and stores the sender's address in `sender`, which must have room for it. Doesn't
    // change `sender.length`.
    std::uint32_t receiveFrom(void* buffer, std::uint32_t size, Address& sender);

    // Sends to `receiver`, or to the connected peer if it is `emptyAddress`. Calls sendto.
    void sendTo(const void* buffer, std::uint32_t size, const Address& receiver);

    // Receive one message into several buffers, filled in order. Block until one arrives. Return
    // the number of bytes received. `peer` may be null; otherwise it receives the sender's address
    // and keeps its length. Call WSARecvMsg. Throw UsageError if there is no buffer, and NetError
    // for every failure of the call.
    std::uint32_t receiveMessage(MessageHeader& header);
    std::uint32_t receiveMessage(const std::vector<MessageBuffer>& buffers);
    std::uint32_t receiveMessage(const std::vector<MessageBuffer>& buffers, Address* peer);

    // Send several buffers as one message, to the connected peer or to `receiver`. Return the
    // number of bytes sent. Call WSASendMsg. Throw as receiveMessage.
    std::uint32_t sendMessage(const std::vector<MessageBuffer>& buffers);
    std::uint32_t sendMessage(const std::vector<MessageBuffer>& buffers, const Address& receiver);

  protected:
    // Implements `read` and `receiveFrom`. `sender` may be null; with `peek` the data stays in the
    // receive queue.
    std::uint32_t receive(void* buffer, std::uint32_t size, Address* sender, bool peek);

  private:
    std::uint32_t send(const void* buffer, std::uint32_t size, const Address& receiver);
    std::uint32_t sendMessage(MessageHeader& header);
};

}  // namespace vek::net
