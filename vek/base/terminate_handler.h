// The report of a program that std::terminate ends.
#pragma once

namespace vek {

// Installs the handler, unless the environment variable VEKPAL_NO_TERMINATE_HANDLER exists, also
// with an empty value. The handler writes the exception that ended the program to std::cerr, a
// vek::Exception with all its causes, or that the reason is unknown; then the runtime aborts the
// program. The handler is never removed.
//
// Calls std::set_terminate. Throws OsError if the environment can't be read.
void installTerminateHandler();

// Called at the start of each vek::thread::Thread. Some runtimes have a handler per thread: there,
// installs the handler on the calling thread if installTerminateHandler has installed it on any.
// Elsewhere does nothing. Throws nothing.
void installTerminateHandlerOnNewThread();

}  // namespace vek
