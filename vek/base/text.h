// Small operations on byte strings. None knows an encoding: a character is a byte, and its class
// and case are those of the C locale.
//
// Throw nothing but std::bad_alloc. Safe from any thread on separate strings.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace vek {

// Removes white space, or exactly the character `ch` if that isn't 0, from both ends of `text`.
// Gives back `text`.
std::string& trim(std::string& text, char ch = 0);

// A trimmed copy of `text`.
std::string trimmed(const std::string& text, char ch = 0);

// Turn `text` into lower or upper case, in place. Give back `text`.
std::string& toLower(std::string& text);
std::string& toUpper(std::string& text);

// Splits `text` at each `delimiter` into `out`, which is emptied first. With `trimFields` each
// field is trimmed of white space. Without `keepEmpty` an empty field is left out, also one that
// trimming has emptied; with it a text without delimiters is one field, even if it is empty. `text`
// must not be an element of `out`.
void split(const std::string& text, char delimiter, std::vector<std::string>& out, bool trimFields,
           bool keepEmpty);

// Replaces every `from` in `text` by `to`, in place. Gives back `text`.
std::string& replaceChar(std::string& text, char from, char to);

// Replaces every `find` in `text` by `replacement`, from the front; replaced text isn't searched
// again. The result is the count of replacements. An empty `find` is found nowhere.
std::size_t replaceAll(std::string& text, const std::string& find, const std::string& replacement);

// The same for every single character of `set`: each is replaced by the whole `replacement`.
std::size_t replaceAnyOf(std::string& text, const std::string& set, const std::string& replacement);

// Replaces every "{key}" in `text` by the value that `values` has for it, one key after the other
// in the order of the map: what a value brings in is open to the keys behind its own. A key that
// isn't in the map stays as it is. The result is the count of replacements.
std::size_t expandVariables(std::string& text, const std::map<std::string, std::string>& values);

}  // namespace vek
