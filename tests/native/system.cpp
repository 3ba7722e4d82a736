// What the pure sources call of the system's side of this framework, for the machine that builds.
// Each stands in for a function of the same header, and does as little as its callers need; none is
// tested itself.
#include <chrono>
#include <cstring>

#include <arpa/inet.h>
#include <netinet/in.h>

#include "tests/native/lead_bytes.h"
#include "tools/log_application/program/deep_stack.h"
#include "tools/log_application/show/ansi_text.h"
#include "vek/auxiliary/line_parser.h"
#include "vek/base/console_colors.h"
#include "vek/base/os_error_text.h"
#include "vek/exception.h"
#include "vek/log/message.h"
#include "vek/net/address_text.h"
#include "vek/net/data_socket.h"
#include "vek/net/own_address.h"
#include "vek/time/clock.h"

namespace vek {

namespace test {

LeadBytes leadBytes;

}  // namespace test

const LeadBytes& ansiLeadBytes() {
    return test::leadBytes;
}

std::string osErrorText(std::uint32_t code) {
    return "error " + std::to_string(code);
}

// There is no console.
void setConsoleColors(bool /*forStdout*/, bool /*forStderr*/) {}

std::ostream& applyColor(std::ostream& stream, const ColorSpec& /*spec*/) {
    return stream;
}

std::ostream& resetColor(std::ostream& stream, const ColorReset& /*reset*/) {
    return stream;
}

}  // namespace vek

namespace vek::time {

void ClockBase::refresh() {
    value = std::chrono::duration_cast<std::chrono::milliseconds>(
                std::chrono::system_clock::now().time_since_epoch())
                .count();
}

void InitClock::refresh() {
    ClockBase::refresh();
}

}  // namespace vek::time

namespace vek::log {

Message::Message(std::string loggerName, std::string messageText, Level messageLevel,
                 std::uint32_t messagePid)
    : level(messageLevel),
      category(std::move(loggerName)),
      text(std::move(messageText)),
      pid(messagePid),
      tid(1),
      timestamp(true) {}

}  // namespace vek::log

namespace vek::net {

bool isOwnAddress(const std::string& text) {
    sockaddr_in raw = {};
    parseAddress(ip4Form, text, &raw);
    return ntohl(raw.sin_addr.s_addr) == INADDR_LOOPBACK;
}

void parseAddress(const AddressForm& form, const std::string& text, void* raw) {
    in_addr address = {};
    if (form.family != ip4Form.family || text.find('\0') != std::string::npos ||
        inet_pton(AF_INET, text.c_str(), &address) != 1) {
        throw NetError(invalidArgument);
    }
    std::memcpy(static_cast<char*>(raw) + form.offset, &address, form.size);
}

// A socket that was never opened, for what stands on one: see fuzz/scripted_socket.h.
Socket::~Socket() = default;

bool Socket::isOpen() const {
    return false;
}

bool Socket::isDatagram() const {
    return false;
}

bool Socket::isStream() const {
    return false;
}

bool Socket::isReliable() const {
    return false;
}

bool Socket::isLossy() const {
    return true;
}

std::uint32_t DataSocket::read(void* /*buffer*/, std::uint32_t /*size*/) {
    return 0;
}

std::uint32_t DataSocket::write(const void* /*buffer*/, std::uint32_t /*size*/) {
    return 0;
}

}  // namespace vek::net

namespace log_application {

// There is no ANSI code page.
std::string utf8Of(std::string_view text) {
    return std::string(text);
}

// Of the default stack of the thread that runs main.
std::size_t stackBottom() {
    static const std::size_t top = reinterpret_cast<std::size_t>(__builtin_frame_address(0));
    return top - (std::size_t{6} << 20);
}

}  // namespace log_application

namespace vek::aux {

void LineParser::parse(const std::string& path, LineCallback& /*callback*/) {
    throw NoSuchFileError(path, 2);
}

}  // namespace vek::aux
