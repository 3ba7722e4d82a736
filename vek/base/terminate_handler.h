// The report of a program that std::terminate ends.
#pragma once

namespace vek {

// Installs the handler, unless the environment variable VEKPAL_NO_TERMINATE_HANDLER exists, also
// with an empty value. The handler writes the exception that ended the program to std::cerr, a
// vek::Exception with all its causes, or that the reason is unknown; then the runtime aborts the
// program. The handler is never removed.
//
// Calls std::set_terminate, which some runtimes keep per thread: call this on each thread there.
// Throws OsError if the environment can't be read.
void installTerminateHandler();

}  // namespace vek
