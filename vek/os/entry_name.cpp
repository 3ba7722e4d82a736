#include "vek/os/entry_name.h"

#include <cstring>
#include <string_view>

#include "vek/base/code_page.h"

namespace vek::os {

bool leadsToItself(const char* name) {
    const std::string_view text = name;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (std::strchr("\\/:*?\"<>|", text[i]) != nullptr && !isTrailByte(text, i)) {
            return false;
        }
    }
    return !text.ends_with('.') && !text.ends_with(' ');
}

}  // namespace vek::os
