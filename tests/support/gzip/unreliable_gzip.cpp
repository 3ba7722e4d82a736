// gzip.exe FILE: does what the environment asks for.
//
//   UNRELIABLE_GZIP_START   an event to be set once it runs
//   UNRELIABLE_GZIP_WAIT    an event to wait for ahead of all else
//   UNRELIABLE_GZIP_SAY     a text for its standard output, behind which its command line follows
//   UNRELIABLE_GZIP_KILL    it kills itself with this exit code, without compressing
//   UNRELIABLE_GZIP_EXIT    it exits with this code, without compressing
//
// With neither of the last two it compresses as gzip does.
#include <cstdlib>
#include <iostream>

#include "tests/support/gzip/gzip_file.h"
#include "vek/base/windows.h"

namespace {

constexpr unsigned longestWaitMs = 60000;

unsigned number(const char* text) {
    return static_cast<unsigned>(std::strtoul(text, nullptr, 10));
}

}  // namespace

int main(int count, char** arguments) {
    if (const char* const name = std::getenv("UNRELIABLE_GZIP_START")) {
        SetEvent(OpenEventA(EVENT_MODIFY_STATE, FALSE, name));
    }
    if (const char* const name = std::getenv("UNRELIABLE_GZIP_WAIT")) {
        WaitForSingleObject(OpenEventA(SYNCHRONIZE, FALSE, name), longestWaitMs);
    }
    if (const char* const text = std::getenv("UNRELIABLE_GZIP_SAY")) {
        std::cout << text << " " << GetCommandLineA() << std::endl;
    }
    if (const char* const code = std::getenv("UNRELIABLE_GZIP_KILL")) {
        TerminateProcess(GetCurrentProcess(), number(code));
    }
    if (const char* const code = std::getenv("UNRELIABLE_GZIP_EXIT")) {
        return static_cast<int>(number(code));
    }
    if (count != 2) {
        return 1;
    }
    support::gzip(arguments[1]);
    return 0;
}
