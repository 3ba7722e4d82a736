// The part of spoolwatch that talks to the service manager.
#pragma once

class SpoolWatch;

// Runs `watch` as the service `name`, until it ends or the service manager wants it to stop.
// Returns the exit code of the process. Throws vek::RuntimeError if the service manager hasn't
// started it.
int runService(const char* name, SpoolWatch& watch);
