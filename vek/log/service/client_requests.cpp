#include "vek/log/service/client_requests.h"

#include <iostream>
#include <list>
#include <sstream>
#include <string_view>

#include "vek/exception.h"
#include "vek/log/level.h"
#include "vek/log/manager.h"
#include "vek/log/service/net_sink.h"
#include "vek/log/service/served_settings.h"
#include "vek/log/sinks/file_sink_config.h"
#include "vek/log/telegram.h"
#include "vek/net/ip4_address.h"

namespace vek::log {

struct ClientRequests::Entry {
    std::string_view type;
    void (ClientRequests::*serve)(Telegram& request);
};

const ClientRequests::Entry ClientRequests::table[] = {
    {"change-scope", &ClientRequests::changeScope},
    {"change-default-scope", &ClientRequests::changeDefaultScope},
    {"get-default-scope", &ClientRequests::getDefaultScope},
    {"agent-list", &ClientRequests::agentList},
    {"evidence-info", &ClientRequests::evidenceInfo},
    {"persist-config", &ClientRequests::persistConfig},
};

namespace {

void describe(const Sink& sink, Telegram& reply) {
    const SinkConfig& config = sink.getConfig();
    reply.clearParams();
    reply.addParam("custom_format", !config.format.empty());
    reply.addParam("enabled", config.enabled);
    reply.addParam("id", sink.id());
    reply.addParam("max_scope", std::string(levelName(config.max_level)));
    if (sink.type() == sinkFile) {
        reply.addParam("path", static_cast<const FileSinkConfig&>(config).path);
    } else if (sink.type() == sinkNet) {
        std::ostringstream peer;
        peer << static_cast<const NetSink&>(sink).peer();
        reply.addParam("peer", peer.str());
    }
}

}  // namespace

void ClientRequests::serve(Telegram& request) {
    for (const Entry& entry : table) {
        if (request.type == entry.type) {
            (this->*entry.serve)(request);
            return;
        }
    }
    std::cerr << "veklog Server: unsupported telegram type encountered: '" + request.type +
                     "'\nIgnoring this and replying with 'unsupported' telegram.\n"
              << std::flush;
    request.clearParams();
    request.type = unsupported;
    request.send();
}

void ClientRequests::changeScope(Telegram& request) {
    // Deliberately, the entries before a bad one stay applied.
    for (const auto& [name, level] : request.params) {
        configurator.setLoggerLevel(name, parseLevel(level));
    }
    request.sendAck();
}

void ClientRequests::changeDefaultScope(Telegram& request) {
    if (request.params.size() != 1 || !request.hasParam("scope")) {
        request.sendError("invalid type/number of arguments encountered");
        return;
    }
    const Level level = parseLevel(request.param("scope"));
    try {
        configurator.setDefaultLevel(level);
    } catch (const Exception& error) {
        request.sendError(error.description());
    }
    // Deliberately also after an error.
    request.sendAck();
}

void ClientRequests::getDefaultScope(Telegram& request) {
    request.clearParams();
    request.type = "default-scope";
    request.addParam("scope", std::string(levelName(configurator.getDefaultLevel())));
    request.send();
}

void ClientRequests::agentList(Telegram& request) {
    request.clearParams();
    for (const Logger* const logger : manager.listLoggers()) {
        request.addParam(
            logger->name(),
            std::string(logger->usesDefault() ? "default" : levelName(logger->level())));
    }
    request.send();
}

void ClientRequests::evidenceInfo(Telegram& request) {
    // Holds the manager's mutex for the whole reply: no message is dispatched meanwhile, and no
    // sink is removed.
    manager.withSinks([&request](const std::list<Sink*>& sinks, std::uint32_t /*pid*/) {
        for (const Sink* const sink : sinks) {
            describe(*sink, request);
            request.send();
        }
        request.clearParams();
        request.addParam(endOfReply, "");
        request.send();
    });
}

void ClientRequests::persistConfig(Telegram& request) {
    try {
        configurator.persistConfig();
    } catch (const Exception& error) {
        request.sendError(error.description());
        return;
    }
    request.sendAck();
}

}  // namespace vek::log
