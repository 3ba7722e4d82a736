// vek::RegistryValue: a value of the registry, of any type, in a form that can be looked at and
// printed. vek/registry.h reads and writes it.
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

// A plain value; one object is not to be changed while another thread uses it. Which field holds
// the contents depends on the type; the others stay empty.
struct RegistryValue {
    enum Type : int {
        TYPE_UNKNOWN = -1,  // any type of the system's that isn't here; without contents
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

    // The value that the `size` bytes at `data` are, as the system keeps a value of its type
    // `systemType` (REG_SZ and the like). Throws std::invalid_argument for a REG_DWORD of fewer
    // than 4 bytes and a REG_QWORD of fewer than 8; what is behind these is left out.
    //
    // The last byte of a REG_SZ and a REG_EXPAND_SZ is taken for the terminator, whatever it is,
    // deliberately. A REG_MULTI_SZ loses its empty elements, and what stands behind its last NUL.
    static RegistryValue fromSystem(std::uint32_t systemType, const unsigned char* data,
                                    std::size_t size);

    // The number of this value's type in the system; 0xFFFFFFFF for TYPE_UNKNOWN and for a number
    // that isn't a type.
    std::uint32_t systemType() const;

    // The bytes that the system keeps for this value, the terminators of strings included. A string
    // type without a string has the bytes of an empty one.
    std::vector<unsigned char> systemData() const;
};

using RegistryValueList = std::list<std::pair<std::string, RegistryValue>>;

// Prints the contents, and " [", the type's name and "]" behind them. Bytes are printed as
// upper-case hexadecimal digits with blanks between, several strings with ", " between, and "?"
// where a type has no contents. Leaves the stream's fill and flags alone.
std::ostream& operator<<(std::ostream& stream, const RegistryValue& value);

// Prints a line for each value: its name, ": ", and the value as above.
std::ostream& operator<<(std::ostream& stream, const RegistryValueList& values);

}  // namespace vek
