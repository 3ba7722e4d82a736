// Frames on a stream, as any peer may send them, and telegrams sent and received through them.
#include "tests/native/fuzz/fuzz.h"
#include "tests/native/fuzz/scripted_socket.h"
#include "vek/exception.h"
#include "vek/log/telegram.h"
#include "vek/net/tcp_buffer.h"

namespace {

using vek::net::TCPBuffer;
using vek::test::require;
using vek::test::ScriptedSocket;

constexpr std::uint32_t sendSize = 300;

// What a reader gets of a stream: its frames, and whether it was refused in the end.
struct Received {
    std::vector<std::string> payloads;
    bool refused = false;

    bool operator==(const Received&) const = default;
};

// Read off the bytes, without a buffer.
Received expected(const std::string& bytes, std::uint32_t largest) {
    Received all;
    for (std::size_t at = 0; bytes.size() - at >= TCPBuffer::prefixSize;) {
        std::uint32_t length = 0;
        for (int i = 0; i < 4; ++i) {
            length = length << 8 | static_cast<unsigned char>(bytes[at++]);
        }
        if (length > largest) {
            all.refused = true;
            break;
        }
        if (length > bytes.size() - at) {
            break;
        }
        if (length != 0) {
            all.payloads.push_back(bytes.substr(at, length));
        }
        at += length;
    }
    return all;
}

Received receive(TCPBuffer& buffer) {
    Received all;
    try {
        // Behind an empty frame the socket is read first, and so its end is told ahead of the bytes
        // that are there: who asks on is given them.
        std::uint32_t left = 1;
        for (std::uint32_t leftBefore = 0; left != leftBefore;) {
            std::uint32_t length = 1;
            if (const char* const payload = buffer.nextMessage(length)) {
                require(length != 0 && length <= buffer.maxMessageSize(), "a payload has a size");
                all.payloads.emplace_back(payload, length);
            } else {
                require(length == 0, "the end of the stream has no length");
                leftBefore = left;
                left = buffer.available();
            }
            // Whatever takes no bytes may be called in between.
            if (length % 3 == 0) {
                buffer.compact();
            }
        }
    } catch (const vek::RuntimeError&) {
        all.refused = true;
        try {
            buffer.hasMessage();
            require(false, "a bad length is refused again");
        } catch (const vek::RuntimeError&) {
        }
    }
    return all;
}

// Telegrams of one peer reach the other as they were, whatever pieces the stream is cut into.
void checkTelegrams(const std::vector<std::string>& texts,
                    const std::vector<std::uint8_t>& pieces) {
    ScriptedSocket sender("", pieces);
    TCPBuffer out(sendSize, TCPBuffer::prefixSize, &sender);
    std::vector<std::string> sent;
    for (const std::string& text : texts) {
        vek::log::Telegram telegram(&out);
        telegram.type = "t";
        telegram.addParam("value", text);
        std::string written;
        telegram.serialize(written);
        try {
            telegram.send();
            require(written.size() <= out.maxPayload(), "what has no room isn't sent");
            sent.push_back(written);
        } catch (const vek::RuntimeError&) {
            require(written.size() > out.maxPayload(), "what has room is sent");
        }
    }
    ScriptedSocket receiver(sender.written, pieces);
    TCPBuffer in(TCPBuffer::prefixSize, sendSize, &receiver);
    vek::log::Telegram telegram(&in);
    for (const std::string& text : sent) {
        require(telegram.receive(), "each telegram arrives");
        vek::log::Telegram original;
        original.parse(text);
        require(telegram.type == original.type && telegram.params == original.params,
                "a telegram arrives as it was sent");
    }
    require(!telegram.receive() && telegram.closed, "nothing else arrives");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto room = input.ConsumeIntegralInRange<std::uint32_t>(TCPBuffer::prefixSize, 80);
    const auto pieces =
        input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 8));
    std::vector<std::string> texts;
    for (int i = input.ConsumeIntegralInRange(0, 3); i > 0; --i) {
        texts.push_back(input.ConsumeRandomLengthString(sendSize + 10));
    }
    checkTelegrams(texts, pieces);
    const std::string bytes = input.ConsumeRemainingBytesAsString();
    ScriptedSocket stream(bytes, pieces);
    TCPBuffer buffer(TCPBuffer::prefixSize, room, &stream);
    require(receive(buffer) == expected(bytes, buffer.maxMessageSize()),
            "the frames are those of the bytes");
    return 0;
}
