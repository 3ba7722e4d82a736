// log_application::CommandOptions: the options of one command, on a parser of TCLAP's.
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

    // Reads the arguments behind the command's name. "--option=value" is good too. Throws Failure
    // (wrong usage).
    Options parse(const std::vector<std::string>& arguments);

    // Writes the help of this command: how it is called, its example, and every option.
    void writeHelp(std::ostream& stream) const;

  private:
    struct Arguments {
        std::vector<std::string> named;     // options, each value behind its option
        std::vector<std::string> operands;  // TCLAP takes such from one parser of a process only
    };

    Arguments takeApart(const std::vector<std::string>& arguments) const;
    bool isValueOption(const std::string& name) const;
    Selection selection();
    SetOptions setOptions(const std::vector<std::string>& operands);
    TailOptions tailOptions();
    OutputKind outputKind();
    bool isFor(Command command) const { return row.command == command; }

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
};

}  // namespace log_application
