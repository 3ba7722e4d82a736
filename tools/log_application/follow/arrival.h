// log_application::Arrival: an element of the LineQueue.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace log_application {

// `source` is the number of the follower that added it.
struct Arrival {
    enum Kind {
        message,  // `text` is the telegram
        notice,   // `text` is for the user
        dropped,  // `count` messages of this source were dropped
        ended,    // the follower has ended; nothing more comes from this source
    };

    Kind kind;
    std::size_t source;
    std::string text;
    std::uint64_t count = 0;
};

}  // namespace log_application
