// What the output of several commands shows of a process.
#pragma once

#include "tools/log_application/connection/endpoint.h"
#include "tools/log_application/connection/process.h"
#include "tools/log_application/show/json_object.h"

namespace log_application {

// An object with the members "name", "pid", "address" and "port". The first two are null for a
// process that is known by its endpoint alone, the last two for an `endpoint` with port 0.
// "name_of_program", true, follows if the name is that of the program.
JsonObject processObject(const Process& process, const Endpoint& endpoint);

// Writes the line "demo (4242) at 127.0.0.1:49731" to std::cout; only the endpoint for a process
// that is known by it alone.
void writeHeading(const Process& process, const Endpoint& endpoint);

}  // namespace log_application
