// vek::net::TCPBuffer: whole messages over a byte stream.
//
// On the stream a message is a frame: the length of the payload in 4 bytes, most significant byte
// first, and the payload. Nothing stands between two frames, and a length of 0 stands for no
// message.
#pragma once

#include <cstdint>
#include <memory>

#include "vek/base/no_copy.h"

namespace vek::net {

class DataSocket;

// For one thread at a time. A message costs no allocation: both buffers are made once.
class TCPBuffer : public NoCopy {
  public:
    // The bytes of the length.
    static constexpr std::uint32_t prefixSize = 4;

    // What `byteOrder` says of the lengths that are sent.
    static constexpr std::uint8_t bigEndian = 0;
    static constexpr std::uint8_t machineOrder = 1;

    // `sendBufferSize` and `recvBufferSize` are in bytes, with the prefix. `stream` may be null and
    // isn't owned. Throws UsageError for a size with no room for the prefix, and as setSocket.
    TCPBuffer(std::uint32_t sendBufferSize, std::uint32_t recvBufferSize,
              DataSocket* stream = nullptr);

    // Does nothing to the socket.
    ~TCPBuffer() = default;

    // Uses `stream`, which isn't owned and has to live as long as messages are taken or sent. May
    // succeed once: throws RuntimeError for a socket that isn't a reliable one, and for any other
    // if there is one already.
    void setSocket(DataSocket* stream);

    // Throws RuntimeError if there is none.
    DataSocket* socket() const;

    // Where the sender lays the payload, `maxPayload` bytes at most, ahead of `commit`.
    char* sendPayload() { return sendBuffer.get() + prefixSize; }

    // The largest payload that can be sent, in bytes.
    std::uint32_t maxPayload() const { return sendSize - prefixSize; }

    // Sends what stands in the send buffer as a frame with a payload of `length` bytes, whole, and
    // blocks as the socket does. The result is the number of bytes that the last call of the socket
    // took. Throws RuntimeError, and has sent nothing, if that is more than `maxPayload` or there
    // is no socket. Throws what the socket throws; part of the frame may be sent then, and the
    // stream is good for nothing more.
    std::uint32_t commit(std::uint32_t length);

    // Blocks until there is a whole frame, and gives its payload, which stands in the receive
    // buffer and stays there until the next call; `length` is its size in bytes. An empty frame is
    // never given.
    //
    // At the end of the stream, also in the middle of a frame, the result is null and `length` 0.
    // Throws RuntimeError if there is no socket, and for a frame of more than `maxMessageSize`: the
    // stream can't be used any more, and each later call throws again. Throws what the socket
    // throws.
    //
    // Behind an empty frame, deliberately, the socket is read before the bytes are looked at that
    // are there already.
    const char* nextMessage(std::uint32_t& length);

    // Whether a whole frame, other than an empty one, is there already. Doesn't touch the socket.
    // Throws as `nextMessage` for a frame that is too large.
    bool hasMessage();

    // The largest payload that can be received, in bytes.
    std::uint32_t maxMessageSize() const { return recvSize - prefixSize; }

    // The number of bytes received and not yet taken.
    std::uint32_t available() const { return writePos - readPos; }

    // Forgets the bytes that are there, though not a length that was read already.
    void reset();

    // Moves the bytes that are there to the start of the receive buffer. The result is the number
    // of bytes that they moved by.
    std::uint32_t compact();

    // Of the lengths that are sent. Those received are always big-endian.
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
    // The first byte not yet taken, and behind the last one received: readPos <= writePos <=
    // recvSize.
    std::uint32_t readPos = 0;
    std::uint32_t writePos = 0;
    // The length of a frame whose payload isn't complete; 0 where the next bytes are a length.
    std::uint32_t pendingLength = 0;
    // Where `commit` stores the length: the start of the send buffer.
    char* const header;
};

}  // namespace vek::net
