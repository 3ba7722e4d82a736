// What a program says when it is ended by std::terminate.
#pragma once

namespace vek {

// Installs the handler, unless the environment has VEKPAL_NO_TERMINATE_HANDLER, also with an empty
// value. It writes to std::cerr what exception ended the program, a vek::Exception with all its
// causes, or that the reason is unknown; then the runtime aborts the program. It stays installed.
//
// Stands on std::set_terminate. Throws OsError if the environment can't be read.
void installTerminateHandler();

}  // namespace vek
