#include "vek/log/service/discovery.h"

#include <algorithm>
#include <iostream>
#include <sstream>

#include "vek/log/telegram.h"
#include "vek/net/own_address.h"

namespace vek::log {

namespace {

using ValueTest = bool (*)(const std::string& value, const ProcessIdentity& self);

bool isPid(const std::string& value, const ProcessIdentity& self) {
    std::int32_t pid = 0;
    if (!(std::istringstream(value) >> pid)) {
        pid = -1;
    }
    return pid == static_cast<std::int32_t>(self.pid);
}

bool isName(const std::string& value, const ProcessIdentity& self) {
    return value == self.name;
}

bool isIp(const std::string& value, const ProcessIdentity& /*self*/) {
    return net::isOwnAddress(value);
}

// In the order of the tests.
constexpr struct {
    const char* key;
    ValueTest matches;
} filters[] = {
    {"pid", isPid},
    {"name", isName},
    {"ip", isIp},
};

// Removes the filters that match from the request. Stops at the first that doesn't.
bool passesFilters(Telegram& request, const ProcessIdentity& self) {
    for (const auto& filter : filters) {
        const std::vector<std::string> values = request.paramValues(filter.key);
        if (values.empty()) {
            continue;
        }
        if (std::none_of(values.begin(), values.end(),
                         [&](const std::string& value) { return filter.matches(value, self); })) {
            return false;
        }
        request.eraseParam(filter.key);
    }
    return true;
}

void report(const std::string& line) {
    std::cerr << line + "\n" << std::flush;
}

}  // namespace

std::optional<std::string> answerDiscovery(const std::string& datagram,
                                           const ProcessIdentity& self) {
    Telegram request;
    request.parse(datagram);
    if (request.type != "discover-request") {
        report("Unknown discovery message type received: '" + request.type + "'");
        return std::nullopt;
    }
    if (!passesFilters(request, self)) {
        return std::nullopt;
    }
    Telegram reply;
    reply.type = "hello";
    if (request.hasParam("id")) {
        // 0 if the text is no number.
        std::uint32_t id = 0;
        std::istringstream(request.param("id")) >> id;
        reply.addParam("id", std::int64_t{id});
        request.eraseParam("id");
    }
    if (!request.params.empty()) {
        report("Got more parameters than expected for '" + request.type + "'.\nIgnoring them");
    }
    reply.addParam("name", self.name);
    reply.addParam("pid", std::int64_t{self.pid});
    reply.addParam("tcpport", std::int64_t{self.tcpPort});
    std::string text;
    reply.serialize(text);
    return text;
}

}  // namespace vek::log
