#include "tools/log_application/finding/port_tables.h"

#include <algorithm>
#include <cstring>

#include "vek/base/windows.h"
// Needs windows.h.
#include <iphlpapi.h>

#include "vek/fs/path_text.h"
#include "vek/net/ip4_address.h"

namespace log_application {

namespace {

// Tables grow between two calls; after so many the system is taken to refuse.
constexpr int mostAttempts = 10;

HeldPort heldPort(DWORD pid, DWORD rawAddress, DWORD rawPort) {
    vek::net::IP4Address address;
    address.setRawAddress(rawAddress);
    address.setRawPort(static_cast<std::uint16_t>(rawPort));
    return {pid, {address.toString(), address.port()}};
}

// Calls `read(buffer, size)` with a growing buffer. The result is the whole table.
template <class Table, class Read>
std::optional<std::vector<HeldPort>> readTable(const Read& read) {
    // Aligned for the table.
    std::vector<DWORD> room(1024);
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        DWORD size = static_cast<DWORD>(room.size()) * DWORD{sizeof(DWORD)};
        const DWORD result = read(room.data(), &size);
        if (result == ERROR_INSUFFICIENT_BUFFER) {
            room.resize(std::max<std::size_t>(2 * room.size(), size / sizeof(DWORD) + 1));
            continue;
        }
        if (result != NO_ERROR) {
            return std::nullopt;
        }
        const auto* const table = reinterpret_cast<const Table*>(room.data());
        std::vector<HeldPort> ports;
        for (DWORD i = 0; i < table->dwNumEntries; ++i) {
            const auto& row = table->table[i];
            ports.push_back(heldPort(row.dwOwningPid, row.dwLocalAddr, row.dwLocalPort));
        }
        return ports;
    }
    return std::nullopt;
}

class SystemPortTables : public PortTables {
  public:
    std::optional<std::vector<HeldPort>> udpSockets() const override {
        return readTable<MIB_UDPTABLE_OWNER_PID>([](void* room, DWORD* size) {
            return GetExtendedUdpTable(room, size, FALSE, AF_INET, UDP_TABLE_OWNER_PID, 0);
        });
    }

    std::optional<std::vector<HeldPort>> tcpListeners() const override {
        return readTable<MIB_TCPTABLE_OWNER_PID>([](void* room, DWORD* size) {
            return GetExtendedTcpTable(room, size, FALSE, AF_INET, TCP_TABLE_OWNER_PID_LISTENER, 0);
        });
    }

    std::string programName(std::uint32_t pid) const override {
        const HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid);
        if (process == nullptr) {
            return "";
        }
        // The longest path that there is.
        std::string path(32'768, '\0');
        DWORD size = static_cast<DWORD>(path.size());
        const bool known = QueryFullProcessImageNameA(process, 0, path.data(), &size) != 0;
        CloseHandle(process);
        if (!known) {
            return "";
        }
        path.resize(size);
        vek::fs::baseName(path);
        constexpr std::size_t extensionSize = 4;
        if (path.size() > extensionSize &&
            _stricmp(path.c_str() + path.size() - extensionSize, ".exe") == 0) {
            path.resize(path.size() - extensionSize);
        }
        return path;
    }
};

}  // namespace

const PortTables& systemPortTables() {
    static const SystemPortTables tables;
    return tables;
}

}  // namespace log_application
