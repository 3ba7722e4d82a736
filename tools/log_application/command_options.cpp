#include "tools/log_application/command_options.h"

#include <algorithm>

#include "tools/log_application/program/failure.h"
#include "tools/log_application/show/escape.h"
#include "vek/log/server.h"

namespace log_application {

namespace {

// True if the command has --output.
bool showsObjects(Command command) {
    return command != Command::set && command != Command::save && command != Command::web &&
           command != Command::forward;
}

std::string helpCommand(const CommandRow& row) {
    return "\"log_application " + std::string(row.name) + " --help\" tells what there is.";
}

}  // namespace

CommandOptions::CommandOptions(const CommandRow& commandRow)
    : row(commandRow),
      parser("", ' ', "", false),
      name("", "name", "the processes of this name; may be repeated, as all that name processes",
           false, "NAME"),
      pid("", "pid", "the process with this id", false, "PID"),
      connect("", "connect", "the process that listens there, without a search", false,
              "HOST:PORT"),
      host("", "host",
           "search on this host, or through this broadcast address, instead of everywhere", false,
           "HOST[:PORT]"),
      all("", "all", "all processes that are found"),
      output("", "output", "text or json", false, "text", "KIND"),
      defaultLevel("", "default", "the level of the loggers that have none of their own", false, "",
                   "LEVEL"),
      forTime("", "for", "put the earlier levels back after this time, as 10m, or at Ctrl-C", false,
              "", "TIME"),
      level("", "level", "only messages of this level and of graver ones", false, "TRACE", "LEVEL"),
      include("", "include", "only messages whose text this is found in; repeated: any of them",
              false, "REGEX"),
      exclude("", "exclude", "no messages whose text this is found in", false, "REGEX"),
      logger("", "logger", "only messages of this logger; may be repeated", false, "NAME"),
      format("", "format",
             "the layout of text, in the keywords of logging.conf: \"{date} [{level}] {agent}: "
             "{msg}\"",
             false, "", "FORMAT"),
      expect("", "expect",
             "end with 0 at the first message shown that this is found in, otherwise with 1", false,
             "", "REGEX"),
      timeout("", "timeout", "end after this time, as 30s", false, "", "TIME"),
      reconnect("", "reconnect", "wait for a process that isn't there yet, or has ended"),
      buffer("", "buffer",
             isFor(Command::forward)
                 ? "messages kept for a collector that is away or slow, or may not have read them"
                 : "lines kept while the output is slower than the messages",
             false, "200000", isFor(Command::forward) ? "MESSAGES" : "LINES"),
      to("", "to", "the log collector, as syslog+tcp://HOST:PORT", false, "", "COLLECTOR"),
      facility("", "facility", "the syslog facility: user, daemon, local0 to local7, ...", false,
               "user", "FACILITY"),
      port("", "port", "listen on this port of 127.0.0.1 instead of a free one", false, "0",
           "PORT") {
    parser.setExceptionHandling(false);
    shown = {&name, &pid, &connect, &host};
    if (isFor(Command::ps)) {
        shown = {&name, &pid, &host};
    }
    if (isFor(Command::set) || isFor(Command::save)) {
        shown.push_back(&all);
    }
    if (isFor(Command::set)) {
        shown.insert(shown.end(), {&defaultLevel, &forTime});
    }
    if (isFor(Command::forward)) {
        shown.insert(shown.end(), {&to, &facility});
    }
    if (follows()) {
        shown.insert(shown.end(), {&level, &include, &exclude, &logger});
    }
    if (showsObjects(row.command)) {
        shown.push_back(&output);
    }
    if (isFor(Command::tail)) {
        shown.insert(shown.end(), {&format, &expect, &timeout, &reconnect, &buffer});
    }
    if (isFor(Command::web)) {
        shown.insert(shown.end(), {&port, &buffer});
    }
    if (isFor(Command::forward)) {
        shown.insert(shown.end(), {&timeout, &buffer});
    }
    for (TCLAP::Arg* const argument : shown) {
        parser.add(argument);
    }
}

bool CommandOptions::isValueOption(const std::string& option) const {
    return std::ranges::any_of(shown, [&option](const TCLAP::Arg* argument) {
        return argument->isValueRequired() && "--" + argument->getName() == option;
    });
}

CommandOptions::Arguments CommandOptions::takeApart(
    const std::vector<std::string>& arguments) const {
    Arguments parts;
    bool valueNext = false;
    for (const std::string& argument : arguments) {
        const std::size_t equals = argument.find('=');
        if (valueNext) {
            parts.named.push_back(argument);
            valueNext = false;
        } else if (equals != std::string::npos && isValueOption(argument.substr(0, equals))) {
            parts.named.push_back(argument.substr(0, equals));
            parts.named.push_back(argument.substr(equals + 1));
        } else if (row.operands.empty() || argument.starts_with("-")) {
            parts.named.push_back(argument);
            valueNext = isValueOption(argument);
        } else {
            parts.operands.push_back(argument);
        }
    }
    return parts;
}

Options CommandOptions::parse(const std::vector<std::string>& arguments) {
    auto [named, operands] = takeApart(arguments);
    named.insert(named.begin(), "log_application");
    try {
        parser.parse(named);
    } catch (const TCLAP::ArgException& error) {
        throw Failure(exitUsage, escapeControls(error.argId() + ": " + error.error()),
                      helpCommand(row));
    }
    Options options;
    options.command = row.command;
    options.selection = selection();
    options.output = outputKind();
    options.set = setOptions(operands);
    options.follow = followOptions();
    options.tail = tailOptions();
    options.web = webOptions();
    options.forward = forwardOptions();
    return options;
}

Selection CommandOptions::selection() {
    Selection chosen;
    chosen.names = name.getValue();
    chosen.all = all.getValue();
    for (const std::string& text : pid.getValue()) {
        const std::optional<std::uint32_t> number = parseNumber(text, 0xFFFFFFFF);
        if (!number) {
            throw Failure(exitUsage, "\"" + escapeControls(text) + "\" is no process id.",
                          "\"log_application ps\" shows those there are.");
        }
        chosen.pids.push_back(*number);
    }
    for (const std::string& text : connect.getValue()) {
        chosen.connect.push_back(parseEndpoint("--connect", text));
    }
    for (const std::string& text : host.getValue()) {
        chosen.hosts.push_back(parseEndpoint("--host", text, vek::log::Server::discoveryPort));
    }
    return chosen;
}

OutputKind CommandOptions::outputKind() {
    const std::string& kind = output.getValue();
    if (kind == "text") {
        return OutputKind::text;
    }
    if (kind == "json") {
        return OutputKind::json;
    }
    if (kind == "raw" && isFor(Command::tail)) {
        return OutputKind::raw;
    }
    throw Failure(exitUsage, "There is no output \"" + escapeControls(kind) + "\".",
                  isFor(Command::tail) ? "--output takes text, json or raw."
                                       : "--output takes text or json.");
}

SetOptions CommandOptions::setOptions(const std::vector<std::string>& operands) {
    SetOptions options;
    for (const std::string& text : operands) {
        options.changes.push_back(parseLevelChange(text));
    }
    if (defaultLevel.isSet()) {
        options.defaultLevel = parseSeverity("--default", defaultLevel.getValue());
    }
    if (forTime.isSet()) {
        options.forMs = parseTime("--for", forTime.getValue());
    }
    if (isFor(Command::set) && options.changes.empty() && !options.defaultLevel) {
        throw Failure(exitUsage, "There is no level to set.",
                      "Write a logger and its level, as net=DEBUG, or --default and a level.");
    }
    return options;
}

FollowOptions CommandOptions::followOptions() {
    FollowOptions options;
    options.filter.level = parseSeverity("--level", level.getValue());
    for (const std::string& text : include.getValue()) {
        options.filter.include.push_back(parsePattern("--include", text));
    }
    for (const std::string& text : exclude.getValue()) {
        options.filter.exclude.push_back(parsePattern("--exclude", text));
    }
    options.filter.loggers = logger.getValue();
    if (timeout.isSet()) {
        options.timeoutMs = parseTime("--timeout", timeout.getValue());
    }
    options.reconnect = reconnect.getValue();
    if (isFor(Command::forward)) {
        options.reconnect = true;
        options.afterClosing = "it is followed again";
    }
    constexpr std::uint32_t mostLines = 10'000'000;
    const std::optional<std::uint32_t> lines = parseNumber(buffer.getValue(), mostLines);
    if (lines.value_or(0) == 0) {
        throw Failure(exitUsage,
                      "\"" + escapeControls(buffer.getValue()) + "\" is no number of " +
                          (isFor(Command::forward) ? "messages." : "lines."),
                      "--buffer takes 1 to 10000000.");
    }
    options.bufferLines = *lines;
    return options;
}

TailOptions CommandOptions::tailOptions() {
    TailOptions options;
    options.format = format.getValue();
    if (expect.isSet()) {
        options.expect = parsePattern("--expect", expect.getValue());
    }
    if (format.isSet() && output.getValue() != "text") {
        throw Failure(
            exitUsage,
            "--format has no meaning for --output " + escapeControls(output.getValue()) + ".",
            "Leave one of the two out.");
    }
    return options;
}

WebOptions CommandOptions::webOptions() {
    constexpr std::uint32_t highestPort = 65535;
    const std::optional<std::uint32_t> number = parseNumber(port.getValue(), highestPort);
    if (!number) {
        throw Failure(exitUsage, "\"" + escapeControls(port.getValue()) + "\" is no port.",
                      "--port takes 1 to 65535; without it, a free port is taken.");
    }
    return {static_cast<std::uint16_t>(*number)};
}

ForwardOptions CommandOptions::forwardOptions() {
    ForwardOptions options;
    if (!isFor(Command::forward)) {
        return options;
    }
    if (!to.isSet()) {
        throw Failure(exitUsage, "There is no collector to send to.",
                      "Name it by --to syslog+tcp://HOST:PORT.");
    }
    options.to = parseCollectorAddress(to.getValue());
    const std::optional<int> number = parseFacility(facility.getValue());
    if (!number) {
        throw Failure(exitUsage, "\"" + escapeControls(facility.getValue()) + "\" is no facility.",
                      "--facility takes kern, user, mail, daemon, auth, syslog, lpr, news, uucp, "
                      "cron, authpriv, ftp, local0 to local7, or a number from 0 to 23.");
    }
    options.facility = *number;
    return options;
}

}  // namespace log_application
