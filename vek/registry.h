// The registry of the system: vek::RegistryKey, an open key, and readers that need none.
//
//     const std::string path =
//         vek::RegistryKey::readString(HKEY_LOCAL_MACHINE, "SOFTWARE\\tolmar", "Path", "C:\\", 0);
//
// Names and paths end at their first NUL. An empty value name stands for the key's default value.
// Unless said otherwise a failed call throws RegistryOsError with the system's result and a text
// that tells what was tried.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/registry_value.h"

namespace vek {

// One object is not to be shared among threads while one of them writes.
class RegistryKey : public NoCopy {
  public:
    // What a key is opened for; combined by |. Other bits mean nothing.
    enum Flags : int {
        READ = 1,
        WRITE = 2,
        CREATE = 4,  // a key that is missing is made, with all keys above it
    };

    // Which of its two registries a 64-bit system is asked for; the first wins. Without one, the
    // system decides.
    enum View : int {
        VIEW_32 = 1,
        VIEW_64 = 2,
    };

    // Opens the key `path` below `parent`, a predefined key or the nativeHandle of one that stays
    // open during this call. An empty path opens `parent` once more. Stands on RegOpenKeyExA, with
    // CREATE on RegCreateKeyExA. Throws RegistryOsError "Unable to open " and the path.
    RegistryKey(HKEY parent, const std::string& path, int flags, int view);

    // Closes. Stands on RegCloseKey.
    ~RegistryKey();

    // Opens the key `name`, which may be a path, below this one, in the view of this one. Keys
    // opened so don't depend on this object. Throws UsageError if CREATE is the only flag,
    // deliberately: with others it is let through. Otherwise as the constructor.
    std::shared_ptr<RegistryKey> openSubkey(const std::string& name, int flags) const;

    // Makes the key `name`, which may be a path, below this one, or opens it if it exists; with all
    // rights that the user has. Stands on RegCreateKeyA.
    std::shared_ptr<RegistryKey> createSubkey(const std::string& name);

    // Deletes the key `name`, which must have no subkeys. Who has it open is told that it is
    // deleted. Stands on RegDeleteKeyA.
    void deleteSubkey(const std::string& name);

    // Deletes the key `name` with all that is in it. An empty name empties this key and leaves it.
    // Stands on RegDeleteTreeA.
    void deleteSubkeyRecursive(const std::string& name);

    // Deletes the value `name`. Stands on RegDeleteValueA.
    void deleteValue(const std::string& name);

    // The names of the subkeys, in the system's order. Throws RegistryOsError with ERROR_MORE_DATA
    // if somebody has made one meanwhile with a name longer than all others; so does listValues,
    // where a value was made longer. Stands on RegQueryInfoKeyA and RegEnumKeyA.
    std::list<std::string> listSubkeys() const;

    // The values with their names, in the system's order. Without `withData` each is a TYPE_NONE.
    // Throws std::invalid_argument as readValue does. Stands on RegQueryInfoKeyA and RegEnumValueA.
    //
    // A string that was stored without a terminator loses its last character here.
    RegistryValueList listValues(bool withData) const;

    // The empty name of the key's default value, if that is set; no name of any other value,
    // deliberately. listValues gives them all.
    std::list<std::string> listValueNames() const;

    // Reads the value `name`, whatever its type and length, and also if somebody changes it
    // meanwhile. Throws std::invalid_argument, which is no vek::Exception, for a REG_DWORD of fewer
    // than 4 bytes and a REG_QWORD of fewer than 8. Stands on RegGetValueA.
    RegistryValue readValue(const std::string& name) const;

    // The same for a TYPE_DWORD and for a TYPE_STRING. Throw RegistryTypeError for other types.
    unsigned long readDword(const std::string& name) const;
    std::string readString(const std::string& name) const;

    // Writes the value `name`, which is made if it is missing. TYPE_NONE and TYPE_UNKNOWN have no
    // contents; a number that isn't a type is written as TYPE_UNKNOWN. Stands on RegSetKeyValueA.
    void writeValue(const std::string& name, const RegistryValue& value);

    // The same readers for the key `path` below `parent`, which is opened for READ in `view` (0, or
    // of View) and closed again. Safe from any thread.
    static RegistryValue readValue(HKEY parent, const std::string& path, const std::string& name,
                                   int view);
    static unsigned long readDword(HKEY parent, const std::string& path, const std::string& name,
                                   int view);
    static std::string readString(HKEY parent, const std::string& path, const std::string& name,
                                  int view);

    // The same, with the result `fallback` where they would throw a RegistryError: the key or the
    // value is missing, may not be read, or is of another type. std::invalid_argument is thrown all
    // the same.
    static RegistryValue readValue(HKEY parent, const std::string& path, const std::string& name,
                                   const RegistryValue& fallback, int view);
    static unsigned long readDword(HKEY parent, const std::string& path, const std::string& name,
                                   unsigned long fallback, int view);
    static std::string readString(HKEY parent, const std::string& path, const std::string& name,
                                  const std::string& fallback, int view);

    // The rights that a key is opened with for `flags` and `view`.
    static std::uint32_t accessMask(int flags, int view);

    // The handle, still owned by this object.
    HKEY nativeHandle() const { return key; }

    // What it was opened with, or the key that it was opened from.
    int viewFlags() const { return view; }

  private:
    // Not open yet.
    explicit RegistryKey(int chosenView) : view(chosenView) {}

    HKEY key = nullptr;
    int view;
};

// Who made this computer, and what it is called.
struct SystemInformation {
    std::string manufacturer;
    std::string product;
};

// Reads both from the registry. What can't be read stays empty, and what stands behind it too.
// Throws nothing but std::bad_alloc. Safe from any thread.
SystemInformation systemInformation();

}  // namespace vek
