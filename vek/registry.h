// The system's registry: vek::RegistryKey, an open key, and static readers that open one
// themselves.
//
//     const std::string path =
//         vek::RegistryKey::readString(HKEY_LOCAL_MACHINE, "SOFTWARE\\tolmar", "Path", "C:\\", 0);
//
// Names and paths end at their first NUL. An empty value name means the key's default value. Unless
// said otherwise a failed call throws RegistryOsError with the system's result and a text that
// names the operation.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/registry_value.h"

namespace vek {

// Not thread-safe while one of the threads writes.
class RegistryKey : public NoCopy {
  public:
    // The purpose of opening a key; combined by |. Other bits are ignored.
    enum Flags : int {
        READ = 1,
        WRITE = 2,
        CREATE = 4,  // a missing key is created, with all its parents
    };

    // The view of a 64-bit system's registry; VIEW_32 takes precedence. Without one, the system
    // decides: a 32-bit program gets the 32-bit view.
    //
    // Only the constructor, openSubkey and the static readers pass the view to the system. The
    // calls behind createSubkey, deleteSubkey and deleteSubkeyRecursive take no view: below a key
    // that has two views (such as HKEY_LOCAL_MACHINE\SOFTWARE) the system may act on its default
    // view, whatever the view of this object. To create a subkey in a view, construct it with
    // CREATE: RegistryKey(key.nativeHandle(), name, READ | WRITE | CREATE, VIEW_64). To delete one
    // in a view, call RegDeleteKeyExA. The list functions and the values use the open key itself,
    // so they stay in its view.
    enum View : int {
        VIEW_32 = 1,
        VIEW_64 = 2,
    };

    // Opens the key `path` below `parent`, a predefined key or the nativeHandle of an open one. An
    // empty path opens `parent` again. Calls RegOpenKeyExA, with CREATE RegCreateKeyExA. Throws
    // RegistryOsError "Unable to open " and the path.
    RegistryKey(HKEY parent, const std::string& path, int flags, int view);

    // Calls RegCloseKey.
    ~RegistryKey();

    // Opens the key `name`, which may be a path, below this one, in the view of this one. The
    // result doesn't depend on this object. Deliberately throws UsageError only if CREATE is the
    // only flag: with others it is accepted. Otherwise throws as the constructor does.
    std::shared_ptr<RegistryKey> openSubkey(const std::string& name, int flags) const;

    // Creates the key `name`, which may be a path, below this one, or opens it if it exists, with
    // all rights that the user has. The result has the view of this object, which its openSubkey
    // uses; RegCreateKeyA, which is called, takes no view (see View).
    std::shared_ptr<RegistryKey> createSubkey(const std::string& name);

    // Deletes the key `name`, which must have no subkeys. Operations on open handles of it fail
    // afterwards. Calls RegDeleteKeyA, which takes no view (see View).
    void deleteSubkey(const std::string& name);

    // Deletes the key `name` with all its subkeys and values. An empty name deletes all subkeys and
    // values of this key, but not the key. Calls RegDeleteTreeA, which takes no view (see View).
    void deleteSubkeyRecursive(const std::string& name);

    // Deletes the value `name`. Calls RegDeleteValueA.
    void deleteValue(const std::string& name);

    // Returns the names of the subkeys, in the system's order. Keys that others create or delete in
    // the meantime may be missing or, after a deletion, make others be skipped. Calls
    // RegQueryInfoKeyA and RegEnumKeyA, the latter again with a buffer of twice the size if a name
    // doesn't fit.
    std::list<std::string> listSubkeys() const;

    // Returns the values with their names, in the system's order. Without `withData` each is a
    // TYPE_NONE. Throws std::invalid_argument as readValue does. Calls RegQueryInfoKeyA and
    // RegEnumValueA, the latter with growing buffers as above.
    //
    // A string that was stored without a terminator loses its last character here.
    RegistryValueList listValues(bool withData) const;

    // Returns the empty name of the key's default value if that is set, and deliberately no name of
    // any other value. For all names use listValues.
    std::list<std::string> listValueNames() const;

    // Reads the value `name`, whatever its type and length, also while others change it. Throws
    // std::invalid_argument, which is no vek::Exception, for a REG_DWORD of fewer than 4 bytes and
    // a REG_QWORD of fewer than 8. Calls RegGetValueA.
    RegistryValue readValue(const std::string& name) const;

    // Read a TYPE_DWORD and a TYPE_STRING. Throw RegistryTypeError for other types.
    unsigned long readDword(const std::string& name) const;
    std::string readString(const std::string& name) const;

    // Writes the value `name`; creates it if it is missing. TYPE_NONE and TYPE_UNKNOWN have no
    // contents; a number that isn't a type is written as TYPE_UNKNOWN. Calls RegSetKeyValueA.
    void writeValue(const std::string& name, const RegistryValue& value);

    // Open the key `path` below `parent` for READ in `view` (0 or a View), read, and close it.
    // Thread-safe.
    static RegistryValue readValue(HKEY parent, const std::string& path, const std::string& name,
                                   int view);
    static unsigned long readDword(HKEY parent, const std::string& path, const std::string& name,
                                   int view);
    static std::string readString(HKEY parent, const std::string& path, const std::string& name,
                                  int view);

    // The same, but return `fallback` instead of throwing a RegistryError: if the key or the value
    // is missing, can't be read, or has another type. std::invalid_argument is still thrown.
    static RegistryValue readValue(HKEY parent, const std::string& path, const std::string& name,
                                   const RegistryValue& fallback, int view);
    static unsigned long readDword(HKEY parent, const std::string& path, const std::string& name,
                                   unsigned long fallback, int view);
    static std::string readString(HKEY parent, const std::string& path, const std::string& name,
                                  const std::string& fallback, int view);

    // Returns the access mask with which a key is opened for `flags` and `view`.
    static std::uint32_t accessMask(int flags, int view);

    // The handle. Owned by this object.
    HKEY nativeHandle() const { return key; }

    // The view that was passed to the constructor, or that of the parent object.
    int viewFlags() const { return view; }

  private:
    // Not open yet.
    explicit RegistryKey(int chosenView) : view(chosenView) {}

    HKEY key = nullptr;
    int view;
};

// The manufacturer and the product name of this computer.
struct SystemInformation {
    std::string manufacturer;
    std::string product;
};

// Reads both from the registry. If one can't be read, it and those after it are empty. Throws
// nothing but std::bad_alloc. Thread-safe.
SystemInformation systemInformation();

}  // namespace vek
