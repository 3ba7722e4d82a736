// What spoolwatch does, as a service or on a console.
#pragma once

#include <cstdint>
#include <string>

#include "vek/thread/condition.h"

struct Settings {
    std::string directory;
    std::int64_t intervalMs = 1000;
    std::uint32_t limit = 10;
    std::uint32_t rounds = 0;
};

// Reads spoolwatch.ini beside the program. Throws vek::Exception if it is missing or has a value
// that can't be read.
Settings readSettings();

// The number of files in `directory`. Throws vek::FsError.
std::uint32_t countFiles(const std::string& directory);

class SpoolWatch {
  public:
    explicit SpoolWatch(const Settings& settings) : settings(settings) {}

    // Counts and logs once in each interval, until `stop` or until all rounds are done.
    void run();

    // Ends `run`. Thread-safe.
    void stop();

  private:
    void countOnce();
    bool waitForStop();

    const Settings settings;
    vek::thread::Condition stopRequest;
    bool stopping = false;  // guarded by the mutex of stopRequest
};
