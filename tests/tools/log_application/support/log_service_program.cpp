// log_service_program MODE [COUNT] -- OPTION...: a process with a log service, under the name that
// the environment variable LOG_SERVICE_NAME gives. The options go to the configurator.
//
//     idle     makes the loggers "a" and "b" and logs "tick" at INFO to the one, "detail" at DEBUG
//              to the other, again and again, until it is ended, or after 100 seconds
//     burst    logs "message 0" and so on, COUNT messages, and ends
//     samples  logs one message of each kind that is hard to show, and ends
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <tclap/CmdLine.h>

#include "vek/base/environment.h"
#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/log/configurator.h"
#include "vek/log/manager.h"
#include "vek/log/message.h"
#include "vek/log/statement.h"
#include "vek/pal.h"

namespace {

using namespace vek::log;

void idle() {
    Logger& a = *Manager::instance().getLogger("a");
    Logger& b = *Manager::instance().getLogger("b");
    for (int i = 0; i < 5000; ++i) {
        VEK_LOG(a, INFO, "tick " << i);
        VEK_LOG(b, DEBUG, "detail " << i);
        Sleep(20);
    }
}

void burst(int count) {
    Logger& logger = *Manager::instance().getLogger("burst");
    for (int i = 0; i < count; ++i) {
        VEK_LOG(logger, ERR, "message " << i);
    }
}

void samples() {
    Logger& logger = *Manager::instance().getLogger("samples");
    VEK_LOG(logger, ERR, "plain");
    VEK_LOG(logger, WARN, "two\nlines, \x1b[31mred\x1b[0m, \"quoted\" C:\\temp");
    VEK_LOG(logger, INFO, "gr\xC3\xBC\xC3\x9F \xFF\xFE no UTF-8");
    VEK_LOG(logger, DEBUG, "a\x1Fpid=1\x1Fscope=OFF separator");
    AttrMessage* const message = logger.makeAttrMessage(TRACE, "with attributes");
    message->attrs["user"] = "Ann";
    message->attrs["code"] = "7";
    logger.submit(message);
    VEK_LOG(logger, ERR, "");
}

int run(const std::string& mode, int count, std::vector<std::string> options) {
    vek::VekPal pal(false, 0, 0, nullptr);
    std::string name;
    vek::getEnv("LOG_SERVICE_NAME", name);
    TCLAP::CmdLine parser("");
    Configurator configurator(&parser);
    parser.parse(options);
    configurator.configure(name);
    if (mode == "idle") {
        idle();
    } else if (mode == "burst") {
        burst(count);
    } else {
        samples();
    }
    return 0;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    std::vector<std::string> options = {"log_service_program"};
    std::vector<std::string> own;
    bool behind = false;
    for (int i = 1; i < argumentCount; ++i) {
        if (std::string(arguments[i]) == "--") {
            behind = true;
        } else {
            (behind ? options : own).emplace_back(arguments[i]);
        }
    }
    try {
        return run(own.at(0), own.size() > 1 ? std::stoi(own[1]) : 0, options);
    } catch (const std::exception& error) {
        std::cerr << error.what() << std::endl;
        return 9;
    }
}
