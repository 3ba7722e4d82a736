#include "tests/tools/log_application/support/scripted_collector.h"

#include <algorithm>
#include <map>
#include <utility>

#include "tests/support/files.h"
#include "tests/tools/log_application/support/tool_run.h"

namespace log_application_test {

namespace {

// Adds the messages in the frames of `stream`.
void addMessages(const std::string& stream, std::vector<std::string>& messages) {
    for (std::size_t at = 0; at < stream.size();) {
        const std::size_t blank = stream.find(' ', at);
        if (blank == std::string::npos) {
            return;
        }
        const std::string length = stream.substr(at, blank - at);
        if (length.empty() || length.front() == '0' ||
            length.find_first_not_of("0123456789") != std::string::npos) {
            messages.push_back("wrong frame");
            return;
        }
        const std::size_t size = std::stoul(length);
        if (blank + 1 + size > stream.size()) {
            return;
        }
        messages.push_back(stream.substr(blank + 1, size));
        at = blank + 1 + size;
    }
}

std::string between(const std::string& text, const std::string& begin, const std::string& end) {
    const std::size_t from = text.find(begin) + begin.size();
    return text.substr(from, text.find(end, from) - from);
}

}  // namespace

bool ScriptedCollector::Connection::readSome(std::uint32_t size) {
    std::string bytes(size, '\0');
    bytes.resize(socket.read(bytes.data(), size));
    const std::lock_guard guard(collector.lock);
    collector.streams.back() += bytes;
    return !bytes.empty();
}

void ScriptedCollector::Connection::readAll() {
    while (readSome()) {
    }
}

void ScriptedCollector::Connection::send(const std::string& bytes) {
    socket.write(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

void ScriptedCollector::Connection::resetAtTheEnd() {
    const linger atOnce = {1, 0};
    socket.setOption(SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

void ScriptedCollector::Connection::holdOn() const {
    support::waitUntil([this] { return collector.isOver.load(); }, ToolRun::limitMs);
}

ScriptedCollector::ScriptedCollector(Script connectionScript, std::uint16_t atPort)
    : script(std::move(connectionScript)) {
    vek::net::IP4Address address = vek::test::loopbackAddress(atPort);
    // Little room, so that one that doesn't read is soon full.
    std::uint32_t roomBytes = 4096;
    listener.bufferSize(false, false, roomBytes);
    listener.bind(address);
    listener.localAddress(address);
    port = address.port();
    listener.listen(8);
    thread = std::thread(&ScriptedCollector::serve, this);
}

ScriptedCollector::~ScriptedCollector() {
    isOver = true;
    thread.join();
}

void ScriptedCollector::serve() {
    while (!isOver) {
        vek::net::SocketSet reading;
        reading.add(listener.nativeHandle());
        if (!vek::net::Socket::select(&reading, nullptr, nullptr, 999)) {
            Sleep(10);
            continue;
        }
        vek::net::TCPSocket socket(listener.accept());
        vek::test::limitReceiving(socket);
        {
            const std::lock_guard guard(lock);
            streams.emplace_back();
        }
        Connection connection(*this, socket);
        try {
            script(connection, connections++);
        } catch (const vek::Exception&) {
            // The sender has gone.
        }
    }
}

std::vector<std::string> ScriptedCollector::messages() const {
    const std::lock_guard guard(lock);
    std::vector<std::string> all;
    for (const std::string& stream : streams) {
        addMessages(stream, all);
    }
    return all;
}

std::vector<std::string> ScriptedCollector::texts() const {
    std::vector<std::string> all;
    std::map<std::string, std::string> known;
    for (const std::string& message : messages()) {
        const std::string number = between(message, "sequenceId=\"", "\"");
        const auto [before, isNew] = known.emplace(number, message);
        EXPECT_EQ(before->second, message);
        if (isNew) {
            all.push_back(message.substr(message.find("\xEF\xBB\xBF") + 3));
        }
    }
    return all;
}

bool ScriptedCollector::waitForTexts(std::size_t count) const {
    return support::waitUntil([&] { return texts().size() >= count; }, ToolRun::limitMs);
}

std::uint16_t freePort() {
    vek::net::TCPListener listener(false);
    return vek::test::bindToLoopback(listener).port();
}

}  // namespace log_application_test
