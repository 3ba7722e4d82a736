// Small operations on byte strings. They know no encoding: a character is a byte. What is white
// space, and upper and lower case, follow the runtime's locale (setlocale); without a call of
// setlocale that is the C locale, in which only ASCII letters have a case.
//
// They throw nothing but std::bad_alloc and are thread-safe on separate strings.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace vek {

// Removes white space, or exactly the character `ch` if that isn't 0, from both ends of `text`.
// Returns `text`.
std::string& trim(std::string& text, char ch = 0);

// Returns a trimmed copy of `text`.
std::string trimmed(const std::string& text, char ch = 0);

// Convert `text` to lower or upper case, in place. Return `text`.
std::string& toLower(std::string& text);
std::string& toUpper(std::string& text);

// Splits `text` at each `delimiter` into `out`, which is cleared first. With `trimFields` white
// space is removed from both ends of each field. Without `keepEmpty`, fields that are empty, or
// become empty by trimming, are left out; with it, a text without delimiters is one field, even if
// it is empty. `text` must not be an element of `out`.
void split(const std::string& text, char delimiter, std::vector<std::string>& out, bool trimFields,
           bool keepEmpty);

// Replaces every `from` in `text` by `to`, in place. Returns `text`.
std::string& replaceChar(std::string& text, char from, char to);

// Replaces every `find` in `text` by `replacement`, from left to right; inserted text isn't
// searched again. Returns the number of replacements. An empty `find` is never found.
std::size_t replaceAll(std::string& text, const std::string& find, const std::string& replacement);

// The same for every single character of `set`: each is replaced by the whole `replacement`.
std::size_t replaceAnyOf(std::string& text, const std::string& set, const std::string& replacement);

// Replaces every "{key}" in `text` by its value in `values`, one key after the other in the order
// of the map: text that a value has inserted is searched for the later keys. A "{key}" that isn't
// in the map stays. Returns the number of replacements.
std::size_t expandVariables(std::string& text, const std::map<std::string, std::string>& values);

}  // namespace vek
