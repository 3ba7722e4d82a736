// Operations on the text of a path. None touches the disk.
//
// Components are separated by backslashes; a slash counts as a separator only where this is said. A
// backslash that is the second byte of a two-byte character of the ANSI code page (as in code page
// 932) is no separator. Unless said otherwise they throw nothing but std::bad_alloc. Thread-safe on
// separate strings.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "vek/base/text.h"

namespace vek::fs {

// Beside the other operations that change a text in place.
using vek::replaceChar;

// Whether `path` starts with a backslash, or with one byte, a colon and a backslash. "C:" and "C:x"
// are not absolute, and a slash doesn't make a path absolute either.
bool isAbsolute(const std::string& path);

// The first 3 bytes of a path that starts with a drive and a backslash ("C:\"), the first 2 if it
// starts with a drive alone ("C:"), else empty.
std::string rootOf(const std::string& path);

// Removes the backslashes and slashes at the end of `path`, in place, but nothing of its root.
// Returns `path`.
std::string& removeTrailingSeparators(std::string& path);

// Removes one backslash or slash, if it is the last character of `path`, in place. Returns `path`.
std::string& removeLastSeparator(std::string& path);

// Cuts `path` before its last backslash, in place; without a backslash it becomes ".". Returns
// `path`.
std::string& dirName(std::string& path);

// Removes everything up to and including the last backslash of `path`, in place. Returns `path`.
std::string& baseName(std::string& path);

// The offset just behind the last backslash of `path`; 0 if there is none.
std::size_t dirLength(const std::string& path);

// The part of the last component of `path` behind its first dot if `firstDot`, else behind its last
// dot. Empty without a dot.
std::string extension(const std::string& path, bool firstDot);

// The last component of `path`, split at its dots; empty parts are left out.
std::vector<std::string> extensionParts(const std::string& path);

// The leading components that `a` and `b` have in common, joined by a backslash. They are compared
// byte by byte. A leading backslash has an empty component before it. Empty if one path is absolute
// and the other isn't.
std::string commonPrefix(const std::string& a, const std::string& b);

// The parts of `path` between its backslashes, without the empty ones.
std::vector<std::string> components(const std::string& path);

// `parts`, joined by one backslash.
std::string join(const std::vector<std::string>& parts);

// Removes the last `count` components of `path`, in place; the first component always stays.
// Returns `path`.
std::string& stripComponents(std::string& path, std::size_t count);

// `path` made absolute against `directory`, a current directory.
//
// Returns an absolute path unchanged, and one that starts with a drive and a slash, which the
// system takes for absolute. Otherwise only the first component counts: "." is replaced by
// `directory`;
// ".." by the part of `directory` before its last backslash ("C:" for "C:\x", deliberately), or by
// "." if it has none or is a lone separator; anything else is put below `directory`. Empty
// components are dropped. A path that starts with a drive alone ("C:x") is expanded without the
// drive if `directory` is on that drive.
//
// Throws RuntimeError if `directory` is empty, or is on another drive than the one that `path`
// names; never for an absolute path.
std::string expandFrom(const std::string& path, const std::string& directory);

// `path` without the prefix that GetModuleFileNameA keeps for a program that was started by such a
// path: "\\?\C:\x" gives "C:\x" and "\\?\UNC\server\x", in any case, "\\server\x". Any other path,
// such as "\\?\Volume{...}\x", is returned unchanged.
std::string withoutLongPathPrefix(const std::string& path);

// The offset of the first byte of `text`, from `start` on, that is one of `characters`; -1 if there
// is none. Zero bytes count like all others.
std::ptrdiff_t findFirstOf(const std::string& text, const std::string& characters,
                           std::size_t start);

}  // namespace vek::fs
