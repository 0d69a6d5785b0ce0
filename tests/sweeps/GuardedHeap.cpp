// A heap whose blocks end at an unreadable page.

#include "tests/sweeps/GuardedHeap.h"

#include "tests/support/ImportPatch.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

constexpr const char* kCxxRuntime = "libstdc++-6.dll";
constexpr std::size_t kPage = 4096;    // bytes
constexpr std::size_t kAlignment = 16; // bytes, as operator new requires
constexpr int kCanary = 0xC5;

// The bytes between a block's end and the page that follows are filled with the canary.
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

void* __cdecl Allocate(std::size_t size)
{
    if (!g_guards) {
        return std::malloc(size);
    }
    Block* slot = Find(nullptr);
    if (slot == nullptr) {
        return nullptr;
    }
    const std::size_t padded = (size + kAlignment - 1) / kAlignment * kAlignment;
    const std::size_t readable = (padded + kPage - 1) / kPage * kPage;
    auto* pages = static_cast<BYTE*>(::VirtualAlloc(nullptr, readable + kPage, MEM_RESERVE, PAGE_NOACCESS));
    if (::VirtualAlloc(pages, readable, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
        return nullptr;
    }
    BYTE* begin = pages + readable - padded;
    *slot = {pages, begin, begin + size, padded - size};
    std::memset(slot->end, kCanary, slot->padding);
    ++g_allocated;
    return begin;
}

void __cdecl Free(void* memory)
{
    Block* block = memory == nullptr ? nullptr : Find(memory);
    if (block == nullptr) {
        std::free(memory);
        return;
    }
    const Block freed = *block;
    *block = {};
    EXPECT_TRUE(std::all_of(freed.end, freed.end + freed.padding, [](BYTE byte) { return byte == kCanary; }))
        << "a byte was written after a block of " << freed.end - freed.begin << " bytes";
    ::VirtualFree(freed.pages, 0, MEM_RELEASE);
}

} // namespace

GuardedHeap::GuardedHeap()
{
    // They stay until the process ends, so that guarded blocks can be freed at any time.
    [[maybe_unused]] static const auto* const allocate = new ImportPatch(kCxxRuntime, "malloc", &Allocate);
    [[maybe_unused]] static const auto* const free = new ImportPatch(kCxxRuntime, "free", &Free);
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
