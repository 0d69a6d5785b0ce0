// Memory that runs short.

#pragma once

#include "tests/support/ImportPatch.h"

#include <cstdlib>

// Lets the n-th allocation (from 1) of the C++ runtime fail while it lives, and counts blocks. All strings and
// containers of test and library take their memory there, so its scope holds little but the call under test.
// 0 lets none fail. One at a time.
class MemoryFault {
public:
    explicit MemoryFault(int failing = 0)
        : m_malloc("libstdc++-6.dll", "malloc", &Allocate), m_free("libstdc++-6.dll", "free", &Free)
    {
        s_failing = failing;
        s_count = 0;
        s_living = 0;
    }
    ~MemoryFault() { s_failing = 0; }
    MemoryFault(const MemoryFault&) = delete;
    MemoryFault& operator=(const MemoryFault&) = delete;

    static bool HasStruck() { return s_failing != 0 && s_count >= s_failing; }
    static int Allocations() { return s_count; }
    static int LivingBlocks() { return s_living; } // taken and not given back in this scope

private:
    static void* Allocate(std::size_t size)
    {
        ++s_count;
        if (s_count == s_failing) {
            return nullptr;
        }
        ++s_living;
        return std::malloc(size);
    }
    static void Free(void* block)
    {
        s_living -= block == nullptr ? 0 : 1;
        std::free(block);
    }

    inline static int s_failing = 0;
    inline static int s_count = 0;
    inline static int s_living = 0;
    ImportPatch m_malloc;
    ImportPatch m_free;
};
