#include "tests/support/pe_file.h"

#include <cstring>
#include <stdexcept>

#include "tests/support/files.h"

namespace support {

namespace {

template <class T>
T readStructure(const std::string& contents, std::size_t offset) {
    if (offset > contents.size() || contents.size() - offset < sizeof(T)) {
        throw std::runtime_error("the program file ends within its header");
    }
    T result;
    std::memcpy(&result, contents.data() + offset, sizeof result);
    return result;
}

template <class T>
T copied(const char* bytes) {
    T result;
    std::memcpy(&result, bytes, sizeof result);
    return result;
}

}  // namespace

PeFile::PeFile(const std::string& path) : contents(readFile(path)) {
    const auto dos = readStructure<IMAGE_DOS_HEADER>(contents, 0);
    if (dos.e_magic != IMAGE_DOS_SIGNATURE || dos.e_lfanew < 0) {
        throw std::runtime_error("no DOS header");
    }
    const auto start = static_cast<std::size_t>(dos.e_lfanew);
    headers = readStructure<IMAGE_NT_HEADERS32>(contents, start);
    if (headers.Signature != IMAGE_NT_SIGNATURE ||
        headers.OptionalHeader.Magic != IMAGE_NT_OPTIONAL_HDR32_MAGIC) {
        throw std::runtime_error("no header of a 32-bit program");
    }
    std::size_t offset = start + offsetof(IMAGE_NT_HEADERS32, OptionalHeader) +
                         headers.FileHeader.SizeOfOptionalHeader;
    for (unsigned i = 0; i < headers.FileHeader.NumberOfSections; ++i) {
        sections.push_back(readStructure<IMAGE_SECTION_HEADER>(contents, offset));
        offset += sizeof(IMAGE_SECTION_HEADER);
    }
}

const char* PeFile::at(DWORD address, std::size_t size) const {
    for (const IMAGE_SECTION_HEADER& section : sections) {
        if (address >= section.VirtualAddress &&
            address - section.VirtualAddress < section.SizeOfRawData) {
            const std::size_t offset =
                std::size_t{section.PointerToRawData} + (address - section.VirtualAddress);
            if (offset <= contents.size() && size <= contents.size() - offset) {
                return contents.data() + offset;
            }
        }
    }
    throw std::runtime_error("an address outside the program file");
}

const IMAGE_DATA_DIRECTORY& PeFile::directory(unsigned index) const {
    return headers.OptionalHeader.DataDirectory[index];
}

std::vector<std::string> PeFile::importedDlls() const {
    std::vector<std::string> names;
    DWORD address = directory(IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress;
    while (address != 0) {
        const auto entry =
            copied<IMAGE_IMPORT_DESCRIPTOR>(at(address, sizeof(IMAGE_IMPORT_DESCRIPTOR)));
        if (entry.Name == 0) {
            break;
        }
        names.emplace_back(at(entry.Name, 1));
        address += static_cast<DWORD>(sizeof entry);
    }
    return names;
}

std::size_t PeFile::relocationCount() const {
    const IMAGE_DATA_DIRECTORY& table = directory(IMAGE_DIRECTORY_ENTRY_BASERELOC);
    std::size_t count = 0;
    for (DWORD done = 0; done < table.Size;) {
        const auto block = copied<IMAGE_BASE_RELOCATION>(
            at(table.VirtualAddress + done, sizeof(IMAGE_BASE_RELOCATION)));
        if (block.SizeOfBlock < sizeof block) {
            break;
        }
        count += (block.SizeOfBlock - sizeof block) / sizeof(WORD);
        done += block.SizeOfBlock;
    }
    return count;
}

}  // namespace support
