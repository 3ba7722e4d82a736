// Names of directory entries as a search returns them in the ANSI code page.
#pragma once

namespace vek::os {

// Whether a path with `name` at its end leads to the entry that has this name, and nowhere else.
//
// False for a name that holds a separator, "?" or another character that no name can have: the
// system returns such names for characters that the code page doesn't have, U+FF3C for instance as
// a backslash in code page 1252, so "..\x" may be an entry. False too for a name that ends in a dot
// or a blank, which the system drops from a path. Throws nothing. Thread-safe.
bool leadsToItself(const char* name);

}  // namespace vek::os
