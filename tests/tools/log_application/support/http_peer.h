// log_application_test::HttpPeer: a connection to an HTTP server that sends and reads bytes as they
// are.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "tests/tools/log_application/support/tool_run.h"
#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace log_application_test {

// A read or write gives up once it has waited for ToolRun::limitMs. Winsock must be started.
class HttpPeer : public vek::NoCopy {
  public:
    explicit HttpPeer(std::uint16_t port, const char* address = "127.0.0.1")
        : handle(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in place = {};
        place.sin_family = AF_INET;
        place.sin_port = htons(port);
        place.sin_addr.s_addr = inet_addr(address);
        const DWORD limitMs = ToolRun::limitMs;
        setsockopt(handle, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&limitMs),
                   sizeof limitMs);
        setsockopt(handle, SOL_SOCKET, SO_SNDTIMEO, reinterpret_cast<const char*>(&limitMs),
                   sizeof limitMs);
        isConnected = connect(handle, reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0;
    }
    ~HttpPeer() { closesocket(handle); }

    // Returns false once the server has closed the connection.
    bool write(const std::string& text) const {
        for (std::size_t sent = 0; sent < text.size();) {
            const int size =
                ::send(handle, text.data() + sent, static_cast<int>(text.size() - sent), 0);
            if (size <= 0) {
                return false;
            }
            sent += static_cast<std::size_t>(size);
        }
        return true;
    }

    // Reads until `text` has come, the end, or `limitMs` milliseconds are over. Returns everything
    // up to and with `text`, or all there is.
    std::string readUntil(const std::string& text, unsigned limitMs = ToolRun::burstLimitMs) {
        std::size_t found = std::string::npos;
        std::size_t from = 0;
        const ULONGLONG end = GetTickCount64() + limitMs;
        while (text.empty() || (found = ahead.find(text, from)) == std::string::npos) {
            from = ahead.size() < text.size() ? 0 : ahead.size() - text.size();
            char buffer[65536];
            const int size = recv(handle, buffer, sizeof buffer, 0);
            if (size <= 0 || GetTickCount64() > end) {
                return std::exchange(ahead, "");
            }
            ahead.append(buffer, static_cast<std::size_t>(size));
        }
        std::string taken = ahead.substr(0, found + text.size());
        ahead.erase(0, taken.size());
        return taken;
    }
    std::string readAll() { return readUntil(""); }

    // Reads on. Returns whether the server has closed the connection; false if it sends nothing for
    // ToolRun::limitMs.
    bool readToTheEnd() {
        char buffer[4096];
        int size = 0;
        while ((size = recv(handle, buffer, sizeof buffer, 0)) > 0) {
        }
        return size == 0 || WSAGetLastError() != WSAETIMEDOUT;
    }

    bool isConnected = false;

  private:
    const SOCKET handle;
    std::string ahead;
};

}  // namespace log_application_test
