// Operations on the text of a path. None touches the disk.
//
// Components are split at the backslash; a slash counts as a separator only where that is said.
// Unless said otherwise they throw nothing but std::bad_alloc. Safe from any thread on separate
// strings.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "vek/base/text.h"

namespace vek::fs {

// Beside the other operations on texts in place.
using vek::replaceChar;

// Whether `path` starts with a backslash, or with one byte, a colon and a backslash. "C:" and "C:x"
// are not absolute, and a slash doesn't make a path absolute either.
bool isAbsolute(const std::string& path);

// The first 3 bytes of a path that starts with a drive and a backslash ("C:\"), the first 2 if it
// starts with a drive alone ("C:"), else empty.
std::string rootOf(const std::string& path);

// Removes the backslashes and slashes at the end of `path`, in place, but nothing of its root.
// Gives back `path`.
std::string& removeTrailingSeparators(std::string& path);

// Cuts `path` ahead of its last backslash, in place; without a backslash it becomes ".". Gives back
// `path`.
std::string& dirName(std::string& path);

// Removes everything up to the last backslash from `path`, in place, the backslash included. Gives
// back `path`.
std::string& baseName(std::string& path);

// The offset just behind the last backslash of `path`; 0 if there is none.
std::size_t dirLength(const std::string& path);

// What stands behind the first dot of the last component of `path`, if `firstDot`, or else behind
// its last dot. Empty without a dot.
std::string extension(const std::string& path, bool firstDot);

// The last component of `path`, split at its dots; empty parts are left out.
std::vector<std::string> extensionParts(const std::string& path);

// The components that `a` and `b` have in common at their beginning, joined by a backslash. They
// are compared byte by byte. What stands ahead of a leading backslash is an empty component. Empty
// if one path is absolute and the other isn't.
std::string commonPrefix(const std::string& a, const std::string& b);

// `parts`, joined by one backslash.
std::string join(const std::vector<std::string>& parts);

// Removes the last `count` components of `path`, in place; the first component stays in any case.
// Gives back `path`.
std::string& stripComponents(std::string& path, std::size_t count);

// `path` made absolute against `directory`, a current directory.
//
// An absolute path is given back as it stands, and so is one that starts with a drive and a slash,
// which the system takes for absolute. Otherwise the first component is looked at, and no other: a
// "." is replaced by `directory`; a ".." by what stands ahead of the last backslash of `directory`
// ("C:" for "C:\x", deliberately), or by "." if there is none or `directory` is a lone separator;
// ahead of anything else `directory` is put. Empty components are dropped. A path that starts with
// a drive alone ("C:x") is expanded without the drive if `directory` stands on it.
//
// Throws RuntimeError if `directory` is empty, or stands on another drive than `path` names, where
// this process has no directory to go by; but not for an absolute path.
std::string expandFrom(const std::string& path, const std::string& directory);

// The offset of the first byte of `text`, from `start` on, that is one of `characters`; -1 if there
// is none. Zero bytes count like all others.
std::ptrdiff_t findFirstOf(const std::string& text, const std::string& characters,
                           std::size_t start);

}  // namespace vek::fs
