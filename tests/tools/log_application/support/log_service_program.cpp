// log_service_program MODE [COUNT [SIZE]] -- OPTION...: a process with a log service, under the
// name that the environment variable LOG_SERVICE_NAME gives. The options go to the configurator.
//
//     idle     makes the loggers "a" and "b" and logs "tick" at INFO to the one, "detail" at DEBUG
//              to the other, again and again, until it is ended, or after 100 seconds
//     burst    logs "message 0" and so on, COUNT messages, and ends. With a SIZE, "message 0 xxx",
//              each of that many bytes
//     work     logs what a busy program may log, at all levels, until it is ended, or after 6
//              minutes
//     hostile  logs markup in place of texts, again and again, until it is ended, or after 100
//              seconds
//     samples  logs one message of each kind that is hard to show, and ends
#include <cstdlib>
#include <iostream>
#include <map>
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

void submitWith(Logger& logger, Level level, const std::string& text,
                const std::map<std::string, std::string>& attributes) {
    AttrMessage* const message = logger.makeAttrMessage(level, text);
    for (const auto& [key, value] : attributes) {
        message->attrs[key] = value;
    }
    logger.submit(message);
}

void work() {
    Logger& net = *Manager::instance().getLogger("net");
    Logger& store = *Manager::instance().getLogger("store");
    Logger& jobs = *Manager::instance().getLogger("jobs");
    for (int i = 0; i < 4500; ++i) {
        VEK_LOG(net, DEBUG, "received frame of " << 200 + i * 37 % 900 << " bytes");
        if (i % 3 == 0) {
            VEK_LOG(jobs, INFO, "job " << 4000 + i / 3 << " taken, " << i % 7 << " waiting");
        }
        if (i % 5 == 0) {
            submitWith(store, INFO, "order saved",
                       {{"order", std::to_string(70'000 + i)}, {"ms", std::to_string(3 + i % 11)}});
        }
        if (i % 23 == 7) {
            VEK_LOG(store, WARN, "slow query: " << 800 + i % 400 << " ms for 3 rows");
        }
        if (i % 61 == 11) {
            submitWith(net, ERR, "peer closed the connection in the middle of a frame",
                       {{"peer", "10.1.0." + std::to_string(i % 250)}, {"port", "5012"}});
        }
        VEK_LOG(jobs, TRACE, "tick " << i);
        Sleep(80);
    }
}

void hostile() {
    Logger& logger = *Manager::instance().getLogger("<b>bold</b>");
    Logger& foreign = *Manager::instance().getLogger(
        "gr\xC3\xB6\xC3\x9F"
        "e \xE6\x97\xA5\xE6\x9C\xAC");
    for (int i = 0; i < 500; ++i) {
        submitWith(logger, ERR,
                   "<script>document.title='owned'</script><img src=x onerror=\"document.title="
                   "'owned'\"> \x1b[31m \xE2\x80\xAE" +
                       std::to_string(i),
                   {{"<i>key</i>", "<svg onload=alert(1)>"}});
        VEK_LOG(foreign, DEBUG, "a name outside ASCII");
        Sleep(200);
    }
}

void burst(int count, std::size_t size) {
    Logger& logger = *Manager::instance().getLogger("burst");
    for (int i = 0; i < count; ++i) {
        std::string text = "message " + std::to_string(i);
        if (text.size() < size) {
            text += ' ';
            text.resize(size, 'x');
        }
        VEK_LOG(logger, ERR, text);
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

int run(const std::string& mode, int count, std::size_t size, std::vector<std::string> options) {
    vek::VekPal pal(false, 0, 0, nullptr);
    std::string name;
    vek::getEnv("LOG_SERVICE_NAME", name);
    TCLAP::CmdLine parser("");
    Configurator configurator(&parser);
    parser.parse(options);
    configurator.configure(name);
    if (mode == "idle") {
        idle();
    } else if (mode == "work") {
        work();
    } else if (mode == "hostile") {
        hostile();
    } else if (mode == "burst") {
        burst(count, size);
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
        return run(own.at(0), own.size() > 1 ? std::stoi(own[1]) : 0,
                   own.size() > 2 ? std::stoul(own[2]) : 0, options);
    } catch (const std::exception& error) {
        std::cerr << error.what() << std::endl;
        return 9;
    }
}
