// log_application::Arrival: what the reader of a process hands to the one who writes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace log_application {

// One arrival. `source` tells the reader; each has a number of its own.
struct Arrival {
    enum Kind {
        message,  // `text` is the telegram
        notice,   // `text` is for the user
        dropped,  // `count` messages of this source found no room
        ended,    // the reader has ended; nothing more comes of this source
    };

    Kind kind;
    std::size_t source;
    std::string text;
    std::uint64_t count = 0;
};

}  // namespace log_application
