// Replaces operator new and delete in the test programs of the checked build.
//
// Each block ends at the end of a page, and the page behind it has no memory, so that an overflow
// faults at once. A freed block loses its memory, and its addresses are used again only after all
// others, so that a use after free faults, too. What lies between a block and the ends of its pages
// is filled, and compared when the block is freed: this finds a write ahead of the block, and one
// into the up to 7 bytes that its alignment leaves behind it. Fresh memory is filled with 0xCD.
//
// The address space is limited: a block of more than `largestBlock` bytes, and any block while
// `mostBlocks` of them or all pages are in use, comes from the C runtime unguarded.
//
// A fault in the pages of this heap, and a trap of the sanitizer of undefined behaviour, is
// reported on stderr.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "vek/base/windows.h"

namespace {

constexpr std::size_t pageSize = 4096;
constexpr std::size_t pageCount = 0x30000;  // 768 MB
constexpr std::size_t largestBlock = 0x1000000;
// Each block in use is two areas to the system underneath, which has room for 65530 of them.
constexpr int mostBlocks = 20000;
// What the C runtime gives. A block whose size is a multiple of 16 is aligned to 16.
constexpr std::size_t alignment = 8;
constexpr unsigned char fresh = 0xCD;
constexpr unsigned char fence = 0xFD;

struct Page {
    std::uint32_t pages;  // of the block that begins here, with its guard page; 0: none begins here
    std::uint32_t size;   // of that block, or of the one that was here last
};

SRWLOCK lock = SRWLOCK_INIT;
std::byte* region = nullptr;
Page pages[pageCount];
bool used[pageCount];
std::size_t cursor = 0;
int blocks = 0;

// Allocating leaves the thread's last error as it was, as with the C runtime's heap.
class Unnoticed {
  public:
    Unnoticed() : error(GetLastError()) {}
    ~Unnoticed() { SetLastError(error); }
    Unnoticed(const Unnoticed&) = delete;
    Unnoticed& operator=(const Unnoticed&) = delete;

  private:
    const DWORD error;
};

class Locked {
  public:
    Locked() { AcquireSRWLockExclusive(&lock); }
    ~Locked() { ReleaseSRWLockExclusive(&lock); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
};

[[noreturn]] void fail(const char* what, const void* block, std::size_t size) {
    std::fprintf(stderr, "guarded heap: %s, block %p of %u bytes\n", what, block,
                 static_cast<unsigned>(size));
    std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), 3);
    std::abort();
}

LONG CALLBACK report(EXCEPTION_POINTERS* pointers) {
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    if (record.ExceptionCode == EXCEPTION_ILLEGAL_INSTRUCTION) {
        std::fprintf(stderr, "undefined behaviour at %p: see i686-w64-mingw32-addr2line -fCe\n",
                     record.ExceptionAddress);
    } else if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION) {
        const auto address = static_cast<std::uintptr_t>(record.ExceptionInformation[1]);
        const std::size_t page = (address - reinterpret_cast<std::uintptr_t>(region)) / pageSize;
        if (page < pageCount) {
            std::size_t first = page;
            while (first > 0 && pages[first].size == 0) {
                --first;
            }
            const char* const what =
                pages[first].pages != 0 ? "an access behind" : "an access to the freed";
            std::fprintf(stderr, "guarded heap: %s block of %u bytes, at %p from %p\n", what,
                         static_cast<unsigned>(pages[first].size), reinterpret_cast<void*>(address),
                         record.ExceptionAddress);
        }
    }
    std::fflush(stderr);
    return EXCEPTION_CONTINUE_SEARCH;
}

// The first of `count` pages that nothing uses, from the cursor on; pageCount if there are none.
std::size_t findPages(std::size_t count) {
    std::size_t found = 0;
    for (std::size_t looked = 0; looked < pageCount + count; ++looked) {
        if (cursor == pageCount) {
            cursor = 0;
            found = 0;
        }
        found = used[cursor] ? 0 : found + 1;
        ++cursor;
        if (found == count) {
            return cursor - count;
        }
    }
    return pageCount;
}

bool makeRegion() {
    if (region == nullptr) {
        region = static_cast<std::byte*>(
            VirtualAlloc(nullptr, pageCount * pageSize, MEM_RESERVE, PAGE_NOACCESS));
        AddVectoredExceptionHandler(1, report);
    }
    return region != nullptr;
}

// A guarded block, or null if there is no room.
void* allocateGuarded(std::size_t size) {
    const Unnoticed unnoticed;
    const Locked locked;
    if (size > largestBlock || blocks == mostBlocks || !makeRegion()) {
        return nullptr;
    }
    const std::size_t rounded = (size + alignment - 1) / alignment * alignment;
    const std::size_t bytes = (rounded + pageSize - 1) / pageSize * pageSize;
    const std::size_t count = bytes / pageSize + 1;
    const std::size_t first = findPages(count);
    if (first == pageCount) {
        return nullptr;
    }
    std::byte* const start = region + first * pageSize;
    if (VirtualAlloc(start, bytes, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
        return nullptr;
    }
    std::memset(used + first, 1, count);
    std::memset(pages + first, 0, count * sizeof(Page));
    pages[first] = {static_cast<std::uint32_t>(count), static_cast<std::uint32_t>(size)};
    ++blocks;
    std::byte* const block = start + bytes - rounded;
    std::memset(start, fence, static_cast<std::size_t>(block - start));
    std::memset(block, fresh, size);
    std::memset(block + size, fence, rounded - size);
    return block;
}

void checkFence(const std::byte* from, const std::byte* to, const void* block, std::size_t size,
                const char* what) {
    for (; from != to; ++from) {
        if (*from != std::byte{fence}) {
            fail(what, block, size);
        }
    }
}

void freeGuarded(std::byte* block, std::size_t expected) {
    const Unnoticed unnoticed;
    const Locked locked;
    const std::size_t first = static_cast<std::size_t>(block - region) / pageSize;
    const Page page = pages[first];
    if (page.pages == 0) {
        fail("freed twice, or no block at all", block, page.size);
    }
    const std::size_t bytes = (page.pages - 1) * pageSize;
    std::byte* const start = region + first * pageSize;
    const std::size_t rounded = (page.size + alignment - 1) / alignment * alignment;
    if (block != start + bytes - rounded) {
        fail("freed by a pointer into it", block, page.size);
    }
    if (expected != SIZE_MAX && expected != page.size) {
        fail("freed as another type", block, page.size);
    }
    checkFence(start, block, block, page.size, "a write ahead of");
    checkFence(block + page.size, start + bytes, block, page.size, "a write behind");
    VirtualFree(start, bytes, MEM_DECOMMIT);
    std::memset(used + first, 0, page.pages);
    pages[first].pages = 0;
    --blocks;
}

void release(void* memory, std::size_t expected) {
    auto* const block = static_cast<std::byte*>(memory);
    if (region != nullptr && block >= region && block < region + pageCount * pageSize) {
        freeGuarded(block, expected);
    } else {
        std::free(memory);
    }
}

}  // namespace

// The other forms, those of arrays too, of the operators come down to these. Those of larger
// alignments don't, and are the C runtime's.
void* operator new(std::size_t size) {
    const std::size_t some = size != 0 ? size : 1;
    void* memory = allocateGuarded(some);
    if (memory == nullptr) {
        memory = std::malloc(some);
    }
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    release(memory, SIZE_MAX);
}

void operator delete(void* memory, std::size_t size) noexcept {
    release(memory, size != 0 ? size : 1);
}
