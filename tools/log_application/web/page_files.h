// The files of the page, which are in the folder "page" and are compiled into the program.
#pragma once

#include <optional>
#include <string_view>

namespace log_application {

struct PageFile {
    std::string_view type;  // of its content, for the browser
    std::string_view text;
};

// Returns none if there is no file `name`. The empty name is that of the page itself. The result is
// in static storage.
std::optional<PageFile> findPageFile(std::string_view name);

}  // namespace log_application
