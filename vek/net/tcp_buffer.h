// vek::net::TCPBuffer: sends and receives whole messages over a byte stream.
//
// Each message is a frame: the length of the payload in 4 bytes, most significant byte first, then
// the payload. There is nothing between two frames. A frame of length 0 carries no message.
#pragma once

#include <cstdint>
#include <memory>

#include "vek/base/no_copy.h"

namespace vek::net {

class DataSocket;

// Not thread-safe. Both buffers are allocated once, so a message needs no allocation.
class TCPBuffer : public NoCopy {
  public:
    // The size of the length prefix in bytes.
    static constexpr std::uint32_t prefixSize = 4;

    // The values of `byteOrder`.
    static constexpr std::uint8_t bigEndian = 0;
    static constexpr std::uint8_t machineOrder = 1;

    // `sendBufferSize` and `recvBufferSize` are in bytes and include the prefix. `stream` may be
    // null and isn't owned. Throws UsageError for a size below prefixSize, and as setSocket.
    TCPBuffer(std::uint32_t sendBufferSize, std::uint32_t recvBufferSize,
              DataSocket* stream = nullptr);

    // Doesn't touch the socket.
    ~TCPBuffer() = default;

    // Sets the socket, which isn't owned and must live as long as this sends or receives. Succeeds
    // only once. Throws RuntimeError for a null or unreliable socket (such as a UDPSocket), and if
    // a socket is set already.
    void setSocket(DataSocket* stream);

    // Returns the socket. Throws RuntimeError if none is set.
    DataSocket* socket() const;

    // Where the caller writes the payload, at most `maxPayload` bytes, before `commit`.
    char* sendPayload() { return sendBuffer.get() + prefixSize; }

    // The largest payload that can be sent, in bytes.
    std::uint32_t maxPayload() const { return sendSize - prefixSize; }

    // Sends the first `length` bytes of the payload area as one frame. Blocks until the whole frame
    // has been passed to the socket. Returns the number of bytes sent by the last write of the
    // socket. Throws RuntimeError and sends nothing if `length` exceeds `maxPayload` or no socket
    // is set. Throws what the socket throws; part of the frame may have been sent then, and the
    // stream can't be used any more.
    std::uint32_t commit(std::uint32_t length);

    // Blocks until a whole frame has arrived. Returns its payload, which points into the receive
    // buffer and is valid until the next call, and stores its size in bytes in `length`. Empty
    // frames are skipped.
    //
    // Returns null, with `length` 0, at the end of the stream, also in the middle of a frame.
    // Throws RuntimeError if no socket is set, and for a frame larger than `maxMessageSize`: the
    // stream can't be used any more, and each later call throws again. Throws what the socket
    // throws.
    //
    // After an empty frame the socket is read before the bytes that are already in the buffer are
    // looked at, deliberately.
    const char* nextMessage(std::uint32_t& length);

    // Returns true if the next frame is complete in the buffer and not empty: `nextMessage` then
    // returns it without reading the socket. If the next frame is empty this consumes it and
    // returns false, even if a whole frame follows it: call it again if `available` has changed.
    // Doesn't touch the socket. Throws as `nextMessage` for a frame that is too large.
    bool hasMessage();

    // The largest payload that can be received, in bytes.
    std::uint32_t maxMessageSize() const { return recvSize - prefixSize; }

    // The number of received bytes that haven't been consumed. Excludes a length prefix that has
    // been read already.
    std::uint32_t available() const { return writePos - readPos; }

    // Drops the bytes in the receive buffer, but keeps a length prefix that was read already:
    // deliberately, the next bytes received count as that frame's payload.
    void reset();

    // Moves the unconsumed bytes to the start of the receive buffer. Returns the distance in bytes.
    // Invalidates the result of nextMessage.
    std::uint32_t compact();

    // The byte order of the prefixes sent. Those received are always big-endian.
    std::uint8_t byteOrder = bigEndian;

  private:
    void storePrefix(std::uint32_t length);
    void readPrefix();
    bool isPayloadThere() const { return pendingLength != 0 && available() >= pendingLength; }

    DataSocket* usedSocket = nullptr;
    const std::uint32_t sendSize;
    const std::uint32_t recvSize;
    const std::unique_ptr<char[]> sendBuffer;
    const std::unique_ptr<char[]> recvBuffer;
    // The first unconsumed byte, and one past the last byte received: readPos <= writePos <=
    // recvSize.
    std::uint32_t readPos = 0;
    std::uint32_t writePos = 0;
    // The payload length of the frame whose prefix was consumed; 0 if the next bytes are a prefix.
    std::uint32_t pendingLength = 0;
    // Where `commit` stores the prefix: the start of the send buffer.
    char* const header;
};

}  // namespace vek::net
