#include "tools/log_application/web/page_files.h"

#include <algorithm>
#include <cstddef>

namespace log_application {

namespace {

struct EmbeddedFile {
    std::string_view name;
    const unsigned char* bytes;
    std::size_t size;
};

// Made by CMake in the build folder: the array `embeddedFiles`.
#include <embedded_page.inc>

constexpr const char* pageName = "index.html";

std::string_view typeOf(std::string_view name) {
    if (name.ends_with(".js")) {
        return "text/javascript; charset=utf-8";
    }
    if (name.ends_with(".svg")) {
        return "image/svg+xml";
    }
    return name.ends_with(".css") ? "text/css; charset=utf-8" : "text/html; charset=utf-8";
}

}  // namespace

std::optional<PageFile> findPageFile(std::string_view name) {
    const auto* const found =
        std::ranges::find(embeddedFiles, name.empty() ? pageName : name, &EmbeddedFile::name);
    if (found == std::end(embeddedFiles)) {
        return std::nullopt;
    }
    return PageFile{typeOf(found->name),
                    {reinterpret_cast<const char*>(found->bytes), found->size}};
}

}  // namespace log_application
