// vek::RegistryValue: a registry value of any type, to be inspected and printed. It is read and
// written by vek/registry.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <list>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace vek {

// A plain value, thread-safe on separate objects. The type says which field has the contents; the
// others are empty.
struct RegistryValue {
    // What the contents are.
    enum Type : int {
        TYPE_UNKNOWN = -1,  // any other type of the system; without contents
        TYPE_NONE = 0,      // REG_NONE; without contents
        TYPE_DWORD = 1,
        TYPE_QWORD = 2,
        TYPE_BINARY = 3,
        TYPE_STRING = 4,  // REG_SZ
        TYPE_MULTI_STRING = 5,
        TYPE_EXPAND_STRING = 6,  // its variables are never expanded
    };

    RegistryValue() = default;

    // A TYPE_BINARY of the bytes from `first` up to `last`.
    template <std::input_iterator Iterator>
    RegistryValue(Iterator first, Iterator last) : type(TYPE_BINARY), bytes(first, last) {}

    int type = TYPE_NONE;
    std::uint64_t number = 0;          // of TYPE_DWORD and TYPE_QWORD
    std::vector<unsigned char> bytes;  // of TYPE_BINARY
    std::list<std::string> strings;    // of the string types; only TYPE_MULTI_STRING uses more
                                       // than the first

    // The number of a TYPE_DWORD. Throws RegistryTypeError for any other type.
    unsigned long asDword() const;

    // The text of a TYPE_STRING. Throws RegistryTypeError for any other type, TYPE_EXPAND_STRING
    // among them.
    std::string asString() const;

    // Converts the `size` bytes at `data`, the system's form of a value of the type `systemType`
    // (such as REG_SZ). Throws std::invalid_argument for a REG_DWORD of fewer than 4 bytes and a
    // REG_QWORD of fewer than 8; further bytes are ignored.
    //
    // Deliberately, the last byte of a REG_SZ and a REG_EXPAND_SZ is dropped as the terminator,
    // whatever it is. Of a REG_MULTI_SZ, empty elements and bytes after the last NUL are dropped.
    static RegistryValue fromSystem(std::uint32_t systemType, const unsigned char* data,
                                    std::size_t size);

    // Returns the system's number of this value's type; 0xFFFFFFFF for TYPE_UNKNOWN and for a
    // number that isn't a type.
    std::uint32_t systemType() const;

    // Returns the system's form of this value, with the terminators of strings. A string type
    // without a string gives an empty one.
    std::vector<unsigned char> systemData() const;
};

// Values with their names.
using RegistryValueList = std::list<std::pair<std::string, RegistryValue>>;

// Prints the contents, then " [", the type's name and "]". Bytes are printed as upper-case
// hexadecimal digits separated by blanks, several strings separated by ", ", and "?" for a type
// without contents. Doesn't change the stream's fill and flags.
std::ostream& operator<<(std::ostream& stream, const RegistryValue& value);

// Prints one line per value: its name, ": ", and the value as above.
std::ostream& operator<<(std::ostream& stream, const RegistryValueList& values);

}  // namespace vek
