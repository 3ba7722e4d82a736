// Small operations on byte strings. None knows an encoding: a character is a byte, and its class
// and case are those of the C locale.
//
// Throw nothing but std::bad_alloc. Safe from any thread on separate strings.
#pragma once

#include <string>
#include <vector>

namespace vek {

// Removes white space, or exactly the character `ch` if that isn't 0, from both ends of `text`.
// Gives back `text`.
std::string& trim(std::string& text, char ch = 0);

// A trimmed copy of `text`.
std::string trimmed(const std::string& text, char ch = 0);

// Turns `text` into lower case, in place. Gives back `text`.
std::string& toLower(std::string& text);

// Splits `text` at each `delimiter` into `out`, which is emptied first. With `trimFields` each
// field is trimmed. Without `keepEmpty` an empty field is left out, also one that trimming has
// emptied.
void split(const std::string& text, char delimiter, std::vector<std::string>& out, bool trimFields,
           bool keepEmpty);

// Replaces every `from` in `text` by `to`, in place. Gives back `text`.
std::string& replaceChar(std::string& text, char from, char to);

}  // namespace vek
