#include "source/tolmar/helper_directory.h"

#include "vek/os/bounded_text.h"

namespace tolmar {

PathBuffer helperDirectory = {};

PathBuffer helperPath(const char* format) {
    // The limit on the tail leaves room for the longest suffix, so nothing is ever cut here.
    PathBuffer path;
    vek::os::boundedPrint(path.data(), path.size(), format, helperDirectory.data());
    return path;
}

}  // namespace tolmar
