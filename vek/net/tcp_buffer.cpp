#include "vek/net/tcp_buffer.h"

#include <cstring>
#include <string>

#include "vek/exception.h"
#include "vek/net/data_socket.h"

namespace vek::net {

namespace {

std::uint32_t checkedSize(std::uint32_t size) {
    if (size < TCPBuffer::prefixSize) {
        throw UsageError("a TCPBuffer needs room for the 4 bytes of a length");
    }
    return size;
}

}  // namespace

TCPBuffer::TCPBuffer(std::uint32_t sendBufferSize, std::uint32_t recvBufferSize, DataSocket* stream)
    : sendSize(checkedSize(sendBufferSize)),
      recvSize(checkedSize(recvBufferSize)),
      sendBuffer(new char[sendSize]),
      recvBuffer(new char[recvSize]),
      header(sendBuffer.get()) {
    if (stream != nullptr) {
        setSocket(stream);
    }
}

void TCPBuffer::setSocket(DataSocket* stream) {
    if (stream == nullptr || !stream->isReliable() || stream->isLossy()) {
        throw RuntimeError("Unreliable socket provided");
    }
    if (usedSocket != nullptr) {
        throw RuntimeError("You re-assigned a socket, this kills buffer state");
    }
    usedSocket = stream;
}

DataSocket* TCPBuffer::socket() const {
    if (usedSocket == nullptr) {
        throw RuntimeError("no socket set");
    }
    return usedSocket;
}

std::uint32_t TCPBuffer::commit(std::uint32_t length) {
    if (length > maxPayload()) {
        throw RuntimeError(
            "TCPBuffer: Commited send buffer is larger than fits into buffer: buffer = " +
            std::to_string(sendSize) + ", encountered = " + std::to_string(length));
    }
    if (usedSocket == nullptr) {
        throw RuntimeError("Commited send buffer, but no socket set yet!");
    }
    storePrefix(length);
    const std::uint32_t size = length + prefixSize;
    std::uint32_t last = 0;
    for (std::uint32_t sent = 0; sent < size; sent += last) {
        last = usedSocket->write(sendBuffer.get() + sent, size - sent);
    }
    return last;
}

void TCPBuffer::storePrefix(std::uint32_t length) {
    if (byteOrder == machineOrder) {
        std::memcpy(header, &length, prefixSize);
        return;
    }
    for (std::uint32_t i = 0; i < prefixSize; ++i) {
        header[i] = static_cast<char>(static_cast<unsigned char>(length >> (24 - 8 * i)));
    }
}

const char* TCPBuffer::nextMessage(std::uint32_t& length) {
    if (usedSocket == nullptr) {
        throw RuntimeError("Called nextMessage but no DataSocket is set yet!");
    }
    for (;;) {
        readPrefix();
        if (isPayloadThere()) {
            length = pendingLength;
            const char* const payload = recvBuffer.get() + readPos;
            readPos += pendingLength;
            pendingLength = 0;
            if (readPos == writePos) {
                reset();
            }
            return payload;
        }
        if (writePos == recvSize) {
            compact();
        }
        const std::uint32_t received =
            usedSocket->read(recvBuffer.get() + writePos, recvSize - writePos);
        if (received == 0) {
            length = 0;
            return nullptr;
        }
        writePos += received;
    }
}

// Consumes a length prefix if none is pending and all of its bytes are there.
void TCPBuffer::readPrefix() {
    if (pendingLength == 0 && available() >= prefixSize) {
        for (std::uint32_t i = 0; i < prefixSize; ++i) {
            const auto byte = static_cast<unsigned char>(recvBuffer[readPos + i]);
            pendingLength = pendingLength << 8 | byte;
        }
        if (pendingLength <= maxMessageSize()) {
            readPos += prefixSize;
        }
    }
    // Kept, so that each later call throws too: the next bytes are not the start of a frame.
    if (pendingLength > maxMessageSize()) {
        throw RuntimeError(
            "TCPBuffer received a message that is longer than can ever be received: "
            "buffer size = " +
            std::to_string(recvSize) + ", encountered size = " + std::to_string(pendingLength));
    }
}

bool TCPBuffer::hasMessage() {
    readPrefix();
    return isPayloadThere();
}

void TCPBuffer::reset() {
    readPos = 0;
    writePos = 0;
}

std::uint32_t TCPBuffer::compact() {
    const std::uint32_t movedBy = readPos;
    std::memmove(recvBuffer.get(), recvBuffer.get() + readPos, available());
    writePos -= movedBy;
    readPos = 0;
    return movedBy;
}

}  // namespace vek::net
