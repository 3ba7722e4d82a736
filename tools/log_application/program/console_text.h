// log_application::ConsoleText: lets a stream write UTF-8 to a console.
#pragma once

#include <ostream>
#include <streambuf>
#include <string>

#include "vek/base/no_copy.h"

namespace log_application {

// Converts UTF-8 to the code page of the console's output (GetConsoleOutputCP), which is asked at
// each write. Characters that the code page lacks become similar ones or "?". Not thread-safe.
class ConsoleText : public std::streambuf, public vek::NoCopy {
  public:
    // Until destruction `stream`, std::cout or std::cerr, converts what is written to it. Does
    // nothing if the standard handle `standardHandle` of that stream isn't a console: files and
    // pipes get UTF-8. `stream` isn't owned and must outlive this. Calls GetConsoleMode.
    ConsoleText(std::ostream& stream, unsigned long standardHandle);

    ~ConsoleText() override;

  protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;
    int sync() override;

  private:
    bool write(std::string_view text);

    std::ostream& owner;
    std::streambuf* const console;  // null if nothing is converted
    std::string incomplete;         // the first bytes of a character
};

}  // namespace log_application
