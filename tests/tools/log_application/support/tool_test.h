// Shared by the tests of whole runs.
#pragma once

#include <algorithm>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "tests/tools/log_application/support/scripted_server.h"
#include "tests/tools/log_application/support/service_process.h"
#include "tests/tools/log_application/support/tool_run.h"
#include "tools/log_application/program/exit_code.h"
#include "vek/net/winsock.h"

namespace log_application_test {

using log_application::exitDone;
using log_application::exitLost;
using log_application::exitNotDone;
using log_application::exitUsage;

class ToolTest : public vek::test::WinsockTest {};

// Returns a script that answers each request by its type and ends the connection for a type that
// isn't in `answers`.
inline ScriptedServer::Script answering(std::map<std::string, std::string> answers) {
    return [answers](ScriptedServer::Peer& peer) {
        for (;;) {
            const std::string request = peer.request();
            const auto answer = answers.find(request.substr(0, request.find(':')));
            if (answer == answers.end()) {
                return;
            }
            peer.sendFrame(answer->second);
        }
    };
}

inline bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

inline std::size_t lineCount(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

}  // namespace log_application_test
