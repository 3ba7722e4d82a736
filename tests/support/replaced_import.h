// support::ReplacedImport: lets this program call a function of the test instead of one of the
// system's, for tests of failing calls and of exact arguments.
#pragma once

#include <stdexcept>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace support {

// Replaces the entry of the import table for the lifetime of this object. Other modules, and the
// system itself, still call the original. `Function` is a pointer to a function.
template <class Function>
class ReplacedImport : public vek::NoCopy {
  public:
    // `name` is the exported name. Throws std::runtime_error if this program doesn't import it.
    ReplacedImport(const std::string& name, Function replacement)
        : entry(find(name)), original(*entry) {
        write(replacement);
    }
    ~ReplacedImport() { write(original); }

    // The system's function.
    Function getOriginal() const { return original; }

  private:
    template <class Pointer>
    static Pointer at(DWORD address) {
        return reinterpret_cast<Pointer>(reinterpret_cast<char*>(GetModuleHandleA(nullptr)) +
                                         address);
    }

    static Function* find(const std::string& name) {
        const auto* const dos = at<const IMAGE_DOS_HEADER*>(0);
        const auto* const nt = at<const IMAGE_NT_HEADERS*>(static_cast<DWORD>(dos->e_lfanew));
        const DWORD directory =
            nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
        for (auto* dll = at<const IMAGE_IMPORT_DESCRIPTOR*>(directory); dll->Name != 0; ++dll) {
            const auto* names = at<const IMAGE_THUNK_DATA*>(dll->OriginalFirstThunk);
            auto* entries = at<Function*>(dll->FirstThunk);
            for (; names->u1.AddressOfData != 0; ++names, ++entries) {
                if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) {
                    continue;
                }
                const auto* const import =
                    at<const IMAGE_IMPORT_BY_NAME*>(static_cast<DWORD>(names->u1.AddressOfData));
                if (name == reinterpret_cast<const char*>(import->Name)) {
                    return entries;
                }
            }
        }
        throw std::runtime_error(name + " isn't imported");
    }

    void write(Function function) {
        DWORD protection = 0;
        VirtualProtect(entry, sizeof *entry, PAGE_READWRITE, &protection);
        *entry = function;
        VirtualProtect(entry, sizeof *entry, protection, &protection);
    }

    Function* const entry;
    const Function original;
};

}  // namespace support
