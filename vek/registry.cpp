#include "vek/registry.h"

#include <stdexcept>
#include <vector>

#include "vek/exception.h"

namespace vek {

namespace {

constexpr std::size_t firstBufferSize = 1024;

// Any type, and no expansion of variables.
constexpr DWORD readFlags = RRF_RT_ANY | RRF_NOEXPAND;

// The text is put together for a failure only.
void check(LSTATUS result, const char* message, const std::string& name = {},
           const char* messageEnd = "") {
    if (result != ERROR_SUCCESS) {
        throw RegistryOsError(message + name + messageEnd, static_cast<std::uint32_t>(result));
    }
}

template <class Result, class Read>
Result readOr(const Result& fallback, Read read) {
    try {
        return read();
    } catch (const RegistryError&) {
        return fallback;
    }
}

}  // namespace

std::uint32_t RegistryKey::accessMask(int flags, int view) {
    static constexpr std::uint32_t masks[] = {
        0,                                // nothing
        KEY_READ,                         // READ
        KEY_WRITE,                        // WRITE
        KEY_READ | KEY_WRITE,             // READ | WRITE
        KEY_QUERY_VALUE | KEY_SET_VALUE,  // CREATE
        KEY_READ | KEY_SET_VALUE,         // READ | CREATE
        KEY_WRITE | KEY_QUERY_VALUE,      // WRITE | CREATE
        KEY_READ | KEY_WRITE,             // READ | WRITE | CREATE
    };
    const std::uint32_t mask = masks[flags & (READ | WRITE | CREATE)];
    if ((view & VIEW_32) != 0) {
        return mask | KEY_WOW64_32KEY;
    }
    return (view & VIEW_64) != 0 ? mask | KEY_WOW64_64KEY : mask;
}

RegistryKey::RegistryKey(HKEY parent, const std::string& path, int flags, int chosenView)
    : view(chosenView) {
    const REGSAM mask = accessMask(flags, view);
    const LSTATUS result =
        (flags & CREATE) != 0
            ? RegCreateKeyExA(parent, path.c_str(), 0, nullptr, 0, mask, nullptr, &key, nullptr)
            : RegOpenKeyExA(parent, path.c_str(), 0, mask, &key);
    check(result, "Unable to open ", path);
}

RegistryKey::~RegistryKey() {
    if (key != nullptr) {
        RegCloseKey(key);
        key = nullptr;
    }
}

std::shared_ptr<RegistryKey> RegistryKey::openSubkey(const std::string& name, int flags) const {
    if (flags == CREATE) {
        throw UsageError("CREATE cannot be specified in RegistryKey::openSubkey");
    }
    return std::make_shared<RegistryKey>(key, name, flags, view);
}

std::shared_ptr<RegistryKey> RegistryKey::createSubkey(const std::string& name) {
    std::shared_ptr<RegistryKey> subkey(new RegistryKey(view));
    check(RegCreateKeyA(key, name.c_str(), &subkey->key), "Unable to create subkey with name '",
          name, "'");
    return subkey;
}

void RegistryKey::deleteSubkey(const std::string& name) {
    check(RegDeleteKeyA(key, name.c_str()), "Unable to delete subkey with name '", name, "'");
}

void RegistryKey::deleteSubkeyRecursive(const std::string& name) {
    check(RegDeleteTreeA(key, name.c_str()), "Unable to delete subkey with name '", name,
          "' recursively");
}

void RegistryKey::deleteValue(const std::string& name) {
    check(RegDeleteValueA(key, name.c_str()), "Unable to delete value '", name, "'");
}

std::list<std::string> RegistryKey::listSubkeys() const {
    static constexpr const char* message = "Unable to list subkeys";
    DWORD longestName = 0;
    check(RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, nullptr, &longestName, nullptr, nullptr,
                           nullptr, nullptr, nullptr, nullptr),
          message);
    // The length is one of characters, and names may grow meanwhile: the buffer grows as needed.
    std::vector<char> name(longestName + 1);
    std::list<std::string> names;
    for (DWORD index = 0;; ++index) {
        LSTATUS result = ERROR_MORE_DATA;
        while ((result = RegEnumKeyA(key, index, name.data(), static_cast<DWORD>(name.size()))) ==
               ERROR_MORE_DATA) {
            name.resize(2 * name.size());
        }
        if (result == ERROR_NO_MORE_ITEMS) {
            return names;
        }
        check(result, message);
        names.emplace_back(name.data());
    }
}

RegistryValueList RegistryKey::listValues(bool withData) const {
    static constexpr const char* message = "Unable to list values";
    DWORD longestName = 0;
    DWORD longestData = 0;
    check(RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                           &longestName, &longestData, nullptr, nullptr),
          message);
    std::vector<char> name(longestName + 1);
    std::vector<unsigned char> data(withData ? longestData + 1 : 0);
    RegistryValueList values;
    for (DWORD index = 0;;) {
        DWORD nameLength = static_cast<DWORD>(name.size());
        DWORD dataSize = static_cast<DWORD>(data.size());
        DWORD type = REG_NONE;
        const LSTATUS result =
            RegEnumValueA(key, index, name.data(), &nameLength, nullptr, &type,
                          withData ? data.data() : nullptr, withData ? &dataSize : nullptr);
        if (result == ERROR_NO_MORE_ITEMS) {
            return values;
        }
        if (result == ERROR_MORE_DATA) {
            // The system doesn't say which of the two is too small.
            name.resize(2 * name.size());
            data.resize(2 * data.size());
            continue;
        }
        check(result, message);
        values.emplace_back(
            std::string(name.data(), nameLength),
            withData ? RegistryValue::fromSystem(type, data.data(), dataSize) : RegistryValue());
        ++index;
    }
}

std::list<std::string> RegistryKey::listValueNames() const {
    std::list<std::string> names;
    for (const auto& [name, value] : listValues(false)) {
        // Only the default value's name passes, deliberately.
        if (name.empty()) {
            names.push_back(name);
        }
    }
    return names;
}

RegistryValue RegistryKey::readValue(const std::string& name) const {
    std::vector<unsigned char> buffer(firstBufferSize);
    for (;;) {
        DWORD type = REG_NONE;
        DWORD size = static_cast<DWORD>(buffer.size());
        const LSTATUS result =
            RegGetValueA(key, nullptr, name.c_str(), readFlags, &type, buffer.data(), &size);
        if (result != ERROR_MORE_DATA) {
            check(result, "Unable to read value '", name, "'");
            return RegistryValue::fromSystem(type, buffer.data(), size);
        }
        // The size that the system reports is not used: the value may change until it is
        // read again.
        buffer.resize(2 * buffer.size());
    }
}

unsigned long RegistryKey::readDword(const std::string& name) const {
    return readValue(name).asDword();
}

std::string RegistryKey::readString(const std::string& name) const {
    return readValue(name).asString();
}

void RegistryKey::writeValue(const std::string& name, const RegistryValue& value) {
    const std::vector<unsigned char> data = value.systemData();
    check(RegSetKeyValueA(key, nullptr, name.c_str(), value.systemType(), data.data(),
                          static_cast<DWORD>(data.size())),
          "Unable to write value");
}

RegistryValue RegistryKey::readValue(HKEY parent, const std::string& path, const std::string& name,
                                     int view) {
    return RegistryKey(parent, path, READ, view).readValue(name);
}

unsigned long RegistryKey::readDword(HKEY parent, const std::string& path, const std::string& name,
                                     int view) {
    return RegistryKey(parent, path, READ, view).readDword(name);
}

std::string RegistryKey::readString(HKEY parent, const std::string& path, const std::string& name,
                                    int view) {
    return RegistryKey(parent, path, READ, view).readString(name);
}

RegistryValue RegistryKey::readValue(HKEY parent, const std::string& path, const std::string& name,
                                     const RegistryValue& fallback, int view) {
    return readOr(fallback, [&] { return readValue(parent, path, name, view); });
}

unsigned long RegistryKey::readDword(HKEY parent, const std::string& path, const std::string& name,
                                     unsigned long fallback, int view) {
    return readOr(fallback, [&] { return readDword(parent, path, name, view); });
}

std::string RegistryKey::readString(HKEY parent, const std::string& path, const std::string& name,
                                    const std::string& fallback, int view) {
    return readOr(fallback, [&] { return readString(parent, path, name, view); });
}

SystemInformation systemInformation() {
    SystemInformation found;
    try {
        const RegistryKey key(HKEY_LOCAL_MACHINE,
                              "SYSTEM\\CurrentControlSet\\Control\\SystemInformation",
                              RegistryKey::READ, 0);
        found.manufacturer = key.readString("SystemManufacturer");
        found.product = key.readString("SystemProductName");
    } catch (const RegistryError&) {
        // What was read is kept.
    } catch (const std::invalid_argument&) {
        // The value is a number that is too short, and no text.
    }
    return found;
}

}  // namespace vek
