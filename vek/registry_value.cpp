#include "vek/registry_value.h"

#include <algorithm>
#include <stdexcept>

#include "vek/base/hex.h"
#include "vek/exception.h"

namespace vek {

namespace {

constexpr std::size_t dwordSize = 4;
constexpr std::size_t qwordSize = 8;

struct TypeRow {
    int type;
    std::uint32_t systemType;
    const char* name;
};

constexpr TypeRow typeRows[] = {
    {RegistryValue::TYPE_UNKNOWN, 0xFFFFFFFF, "TYPE_UNKNOWN"},
    {RegistryValue::TYPE_NONE, 0, "TYPE_NONE"},                    // REG_NONE
    {RegistryValue::TYPE_DWORD, 4, "TYPE_DWORD"},                  // REG_DWORD
    {RegistryValue::TYPE_QWORD, 11, "TYPE_QWORD"},                 // REG_QWORD
    {RegistryValue::TYPE_BINARY, 3, "TYPE_BINARY"},                // REG_BINARY
    {RegistryValue::TYPE_STRING, 1, "TYPE_STRING"},                // REG_SZ
    {RegistryValue::TYPE_MULTI_STRING, 7, "TYPE_MULTI_STRING"},    // REG_MULTI_SZ
    {RegistryValue::TYPE_EXPAND_STRING, 2, "TYPE_EXPAND_STRING"},  // REG_EXPAND_SZ
};

// Null for a number that isn't a type.
const TypeRow* rowOf(int type) {
    const auto* row = std::ranges::find(typeRows, type, &TypeRow::type);
    return row == std::end(typeRows) ? nullptr : row;
}

int typeOf(std::uint32_t systemType) {
    const auto* row = std::ranges::find(typeRows, systemType, &TypeRow::systemType);
    return row == std::end(typeRows) ? RegistryValue::TYPE_UNKNOWN : row->type;
}

std::uint64_t readNumber(const unsigned char* data, std::size_t size) {
    std::uint64_t number = 0;
    for (std::size_t i = size; i > 0; --i) {
        number = number << 8 | data[i - 1];
    }
    return number;
}

std::vector<unsigned char> numberBytes(std::uint64_t number, std::size_t size) {
    std::vector<unsigned char> bytes;
    for (std::size_t i = 0; i < size; ++i) {
        bytes.push_back(static_cast<unsigned char>(number >> 8 * i));
    }
    return bytes;
}

std::list<std::string> readMultiString(const unsigned char* data, std::size_t size) {
    std::list<std::string> strings;
    const unsigned char* const end = data + size;
    for (const unsigned char* start = data;;) {
        const unsigned char* const terminator = std::find(start, end, 0);
        if (terminator == end) {
            return strings;
        }
        if (terminator != start) {
            strings.emplace_back(start, terminator);
        }
        start = terminator + 1;
    }
}

void appendTerminated(std::vector<unsigned char>& bytes, const std::string& text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
    bytes.push_back(0);
}

const std::string& firstOf(const std::list<std::string>& strings) {
    static const std::string none;
    return strings.empty() ? none : strings.front();
}

void printJoined(std::ostream& stream, const std::list<std::string>& strings) {
    const char* separator = "";
    for (const std::string& text : strings) {
        stream << separator << text;
        separator = ", ";
    }
}

void printContents(std::ostream& stream, const RegistryValue& value) {
    switch (value.type) {
        case RegistryValue::TYPE_UNKNOWN:
        case RegistryValue::TYPE_NONE:
            stream << "?";
            break;
        case RegistryValue::TYPE_DWORD:
        case RegistryValue::TYPE_QWORD:
            // As a text, so that neither the stream's base nor its locale matters.
            stream << std::to_string(value.number);
            break;
        case RegistryValue::TYPE_BINARY:
            stream << hexEncode(value.bytes.data(), value.bytes.size(), ' ', true);
            break;
        case RegistryValue::TYPE_STRING:
        case RegistryValue::TYPE_EXPAND_STRING:
            stream << firstOf(value.strings);
            break;
        case RegistryValue::TYPE_MULTI_STRING:
            printJoined(stream, value.strings);
            break;
        default:
            break;
    }
}

}  // namespace

unsigned long RegistryValue::asDword() const {
    if (type != TYPE_DWORD) {
        throw RegistryTypeError();
    }
    return static_cast<unsigned long>(number);
}

std::string RegistryValue::asString() const {
    if (type != TYPE_STRING) {
        throw RegistryTypeError();
    }
    return firstOf(strings);
}

RegistryValue RegistryValue::fromSystem(std::uint32_t systemType, const unsigned char* data,
                                        std::size_t size) {
    RegistryValue value;
    value.type = typeOf(systemType);
    switch (value.type) {
        case TYPE_DWORD:
            if (size < dwordSize) {
                throw std::invalid_argument("Buffer too small for a DWORD");
            }
            value.number = readNumber(data, dwordSize);
            break;
        case TYPE_QWORD:
            if (size < qwordSize) {
                throw std::invalid_argument("Buffer too small for a QWORD");
            }
            value.number = readNumber(data, qwordSize);
            break;
        case TYPE_BINARY:
            value.bytes.assign(data, data + size);
            break;
        case TYPE_STRING:
        case TYPE_EXPAND_STRING:
            value.strings.emplace_back(data, size == 0 ? data : data + (size - 1));
            break;
        case TYPE_MULTI_STRING:
            value.strings = readMultiString(data, size);
            break;
        default:
            break;
    }
    return value;
}

std::uint32_t RegistryValue::systemType() const {
    const TypeRow* row = rowOf(type);
    return (row == nullptr ? rowOf(TYPE_UNKNOWN) : row)->systemType;
}

std::vector<unsigned char> RegistryValue::systemData() const {
    std::vector<unsigned char> data;
    switch (type) {
        case TYPE_DWORD:
            return numberBytes(number, dwordSize);
        case TYPE_QWORD:
            return numberBytes(number, qwordSize);
        case TYPE_BINARY:
            return bytes;
        case TYPE_STRING:
        case TYPE_EXPAND_STRING:
            appendTerminated(data, firstOf(strings));
            break;
        case TYPE_MULTI_STRING:
            for (const std::string& text : strings) {
                appendTerminated(data, text);
            }
            data.push_back(0);
            break;
        default:
            break;
    }
    return data;
}

std::ostream& operator<<(std::ostream& stream, const RegistryValue& value) {
    printContents(stream, value);
    const TypeRow* row = rowOf(value.type);
    return stream << " [" << (row == nullptr ? "" : row->name) << "]";
}

std::ostream& operator<<(std::ostream& stream, const RegistryValueList& values) {
    for (const auto& [name, value] : values) {
        stream << name << ": " << value << "\n";
    }
    return stream;
}

}  // namespace vek
