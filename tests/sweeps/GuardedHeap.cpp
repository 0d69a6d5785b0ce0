// A heap whose blocks end at an unreadable page.

#include "tests/sweeps/GuardedHeap.h"

#include "tests/support/ImportPatch.h"

#include <windows.h>

#include <oleauto.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace {

constexpr const char* kCxxRuntime = "libstdc++-6.dll";
constexpr const char* kHost = "kestrovane-sweeps.exe";
constexpr std::size_t kPage = 4096;    // bytes
constexpr std::size_t kAlignment = 16; // bytes, as operator new and malloc require
constexpr int kCanary = 0xC5;          // what fills the bytes between a block's end and the page that follows
constexpr int kUninitialised = 0xCD;

struct Block {
    BYTE* pages;
    BYTE* begin;
    BYTE* end;
    std::size_t padding;
};

// Not in a container: that would allocate here.
constexpr std::size_t kMostBlocks = 4096;
Block g_blocks[kMostBlocks];
int g_allocated = 0;
bool g_guards = false;

Block* Find(void* memory)
{
    Block* found = std::find_if(std::begin(g_blocks), std::end(g_blocks),
                                [&](const Block& block) { return block.begin == memory; });
    return found == std::end(g_blocks) ? nullptr : found;
}

std::size_t RoundedUp(std::size_t size, std::size_t unit)
{
    return (size + unit - 1) / unit * unit;
}

// Returns `size` bytes with `prefix` bytes before them.
BYTE* Take(std::size_t size, std::size_t alignment, std::size_t prefix)
{
    Block* slot = Find(nullptr);
    if (slot == nullptr) {
        return nullptr;
    }
    const std::size_t padded = RoundedUp(size, alignment);
    const std::size_t readable = RoundedUp(prefix + padded, kPage);
    auto* pages = static_cast<BYTE*>(::VirtualAlloc(nullptr, readable + kPage, MEM_RESERVE, PAGE_NOACCESS));
    if (::VirtualAlloc(pages, readable, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
        return nullptr;
    }
    BYTE* begin = pages + readable - padded;
    *slot = {pages, begin, begin + size, padded - size};
    std::memset(begin, kUninitialised, size);
    std::memset(slot->end, kCanary, slot->padding);
    ++g_allocated;
    return begin;
}

// Returns false if the memory is not of this heap.
bool GiveBack(void* memory)
{
    Block* block = memory == nullptr ? nullptr : Find(memory);
    if (block == nullptr) {
        return false;
    }
    const Block freed = *block;
    *block = {};
    EXPECT_TRUE(std::all_of(freed.end, freed.end + freed.padding, [](BYTE byte) { return byte == kCanary; }))
        << "a byte was written after a block of " << freed.end - freed.begin << " bytes";
    ::VirtualFree(freed.pages, 0, MEM_RELEASE);
    return true;
}

void* __cdecl Allocate(std::size_t size)
{
    return g_guards ? Take(size, kAlignment, 0) : std::malloc(size);
}

void* __cdecl AllocateZeroed(std::size_t count, std::size_t size)
{
    return g_guards ? std::memset(Take(count * size, kAlignment, 0), 0, count * size) : std::calloc(count, size);
}

void __cdecl Free(void* memory)
{
    if (!GiveBack(memory)) {
        std::free(memory);
    }
}

// To call it by its name here would call the replacement.
decltype(&::SysFreeString) g_freeString = nullptr;

BSTR WINAPI AllocateCharacters(const OLECHAR* characters, UINT length)
{
    if (!g_guards) {
        return ::SysAllocStringLen(characters, length);
    }
    const auto bytes = static_cast<DWORD>(length * sizeof(OLECHAR));
    BYTE* const begin = Take(bytes + sizeof(OLECHAR), alignof(OLECHAR), sizeof(DWORD));
    if (begin == nullptr) {
        return nullptr;
    }
    std::memcpy(begin - sizeof(DWORD), &bytes, sizeof(DWORD));
    if (characters != nullptr) {
        std::memcpy(begin, characters, bytes);
    }
    std::memset(begin + bytes, 0, sizeof(OLECHAR));
    return reinterpret_cast<BSTR>(begin);
}

BSTR WINAPI AllocateString(const OLECHAR* string)
{
    return string == nullptr ? nullptr : AllocateCharacters(string, static_cast<UINT>(std::wcslen(string)));
}

void WINAPI FreeString(BSTR string)
{
    if (!GiveBack(string)) {
        g_freeString(string);
    }
}

// They stay until the process ends, so that guarded blocks can be freed at any time.
struct Patches {
    ImportPatch allocate{kCxxRuntime, "malloc", &Allocate};
    ImportPatch free{kCxxRuntime, "free", &Free};
    ImportPatch allocateDirectly{"malloc", &Allocate};
    ImportPatch allocateZeroed{"calloc", &AllocateZeroed};
    ImportPatch freeDirectly{"free", &Free};
    ImportPatch allocateCharacters{"SysAllocStringLen", &AllocateCharacters};
    ImportPatch allocateString{"SysAllocString", &AllocateString};
    ImportPatch freeString{"SysFreeString", &FreeString};
    ImportPatch hostFreesString{kHost, "SysFreeString", &FreeString};
};

} // namespace

GuardedHeap::GuardedHeap()
{
    static const auto* const patches = new Patches;
    g_freeString = patches->freeString.Original<decltype(::SysFreeString)>();
    g_allocated = 0;
    g_guards = true;
}

GuardedHeap::~GuardedHeap()
{
    g_guards = false;
}

int GuardedHeap::Blocks()
{
    return g_allocated;
}
