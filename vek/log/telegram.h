// vek::log::Telegram: the one message of the log service, a type word and its parameters.
//
// As text it is the type, a colon, and the parameters with 0x1F between them; a parameter is a key
// and, if it has a value, "=" and the value. There is no escape: what holds one of these separators
// reaches the reader as something else. The text fills one datagram, or one frame on a stream
// (net/tcp_buffer.h).
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vek/exception.h"
#include "vek/log/service/telegram_params.h"

namespace vek::net {
class TCPBuffer;
}

namespace vek::log {

// The key that ends a reply of several telegrams.
extern const std::string endOfReply;
// The type of the reply to a telegram that isn't known.
extern const std::string unsupported;

// For one thread at a time. May be used again and again: receiving and parsing replace what it
// holds.
class Telegram {
  public:
    // Text that is no telegram: "ParseError: " and the message.
    class ParseError : public ExceptionOf<ParseError> {
      public:
        explicit ParseError(const std::string& message) : ExceptionOf("ParseError: " + message) {}
    };

    // The peer refused what it was asked for: "LogicalError: " and its message.
    class LogicalError : public ExceptionOf<LogicalError> {
      public:
        explicit LogicalError(const std::string& message)
            : ExceptionOf("LogicalError: " + message) {}
    };

    // `connection` is where the telegram is received and sent, and isn't owned; null for the
    // telegram of a datagram.
    explicit Telegram(net::TCPBuffer* connection = nullptr) : buffer(connection) {}

    std::string type;
    TelegramParams params;
    // Set by `receive` at the end of the stream.
    bool closed = false;

    // The text, taken apart into `type` and `params`; empty pieces between separators are dropped.
    // `text` must not stand in this telegram. Throws ParseError if there is no colon; the telegram
    // is empty then.
    void parse(std::string_view text);

    // The text of this telegram replaces what `text` holds, which must not stand in this telegram.
    // An empty value is written as none.
    void serialize(std::string& text) const;

    // Adding doesn't replace an entry of the same key. A bool becomes "true" or "false", a number
    // its decimal text.
    void addParam(std::string_view key, std::string_view value);
    void addParam(std::string_view key, std::int64_t number);
    template <std::same_as<bool> Bool>
    void addParam(std::string_view key, Bool value) {
        addParam(key, std::string_view(value ? "true" : "false"));
    }

    bool hasParam(std::string_view key) const;

    // The first value of `key`, valid as long as the entry is. Without one it is the very object
    // `noParam`, which is empty, and so can be told from an empty value.
    const std::string& param(std::string_view key) const;
    static const std::string noParam;

    // All values of `key`, in their order.
    std::vector<std::string> paramValues(std::string_view key) const;

    // Removes all entries of `key`. The result is their number.
    std::size_t eraseParam(std::string_view key);

    void clearParams() { params.clear(); }

    // What follows works on the connection. Each throws UsageError if there is none, and what the
    // TCPBuffer throws: RuntimeError for a telegram that is too large, NetError for a failure of
    // the socket.

    // Waits for a telegram. False at the end of the stream: `closed` is true from then on, and the
    // telegram is empty. Throws ParseError as `parse`.
    bool receive();

    // Sends this telegram.
    void send();

    // Send a telegram of this one's type with the one parameter "ack", or "error" with `text`. This
    // one stays as it is.
    void sendAck();
    void sendError(const std::string& text);

    // On the telegram that was sent: waits for the peer's sendAck or sendError. True for the
    // former; for the latter throws LogicalError with its text. False at the end of the stream, and
    // for any other reply, which is reported on std::cerr. Throws ParseError for a reply that is no
    // telegram.
    bool waitForAck();

  private:
    net::TCPBuffer& connection() const;
    // The number of bytes that `serialize` gives, and these bytes, laid to where there is room.
    std::size_t textSize() const;
    void writeText(char* target) const;

    net::TCPBuffer* buffer;
};

}  // namespace vek::log
