// log_application::CommandOptions: parses the options of one command with TCLAP.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <tclap/CmdLine.h>

#include "tools/log_application/command_table.h"
#include "vek/base/no_copy.h"

namespace log_application {

class CommandOptions : public vek::NoCopy {
  public:
    explicit CommandOptions(const CommandRow& commandRow);

    // Parses the arguments behind the command's name. "--option=value" is accepted too. Throws
    // Failure (exitUsage).
    Options parse(const std::vector<std::string>& arguments);

    // Writes the help of this command: usage, an example and all options.
    void writeHelp(std::ostream& stream) const;

  private:
    struct Arguments {
        std::vector<std::string> named;  // each option followed by its value
        std::vector<std::string>
            operands;  // TCLAP allows only one parser per process to have these
    };

    Arguments takeApart(const std::vector<std::string>& arguments) const;
    bool isValueOption(const std::string& name) const;
    Selection selection();
    SetOptions setOptions(const std::vector<std::string>& operands);
    FollowOptions followOptions();
    TailOptions tailOptions();
    WebOptions webOptions();
    ForwardOptions forwardOptions();
    OutputKind outputKind();
    bool isFor(Command command) const { return row.command == command; }
    bool follows() const { return isFor(Command::tail) || isFor(Command::forward); }

    const CommandRow& row;
    TCLAP::CmdLine parser;
    std::vector<TCLAP::Arg*> shown;  // in the order of the help
    TCLAP::MultiArg<std::string> name;
    TCLAP::MultiArg<std::string> pid;
    TCLAP::MultiArg<std::string> connect;
    TCLAP::MultiArg<std::string> host;
    TCLAP::SwitchArg all;
    TCLAP::ValueArg<std::string> output;
    TCLAP::ValueArg<std::string> defaultLevel;
    TCLAP::ValueArg<std::string> forTime;
    TCLAP::ValueArg<std::string> level;
    TCLAP::MultiArg<std::string> include;
    TCLAP::MultiArg<std::string> exclude;
    TCLAP::MultiArg<std::string> logger;
    TCLAP::ValueArg<std::string> format;
    TCLAP::ValueArg<std::string> expect;
    TCLAP::ValueArg<std::string> timeout;
    TCLAP::SwitchArg reconnect;
    TCLAP::ValueArg<std::string> buffer;
    TCLAP::ValueArg<std::string> to;
    TCLAP::ValueArg<std::string> facility;
    TCLAP::ValueArg<std::string> port;
};

}  // namespace log_application
