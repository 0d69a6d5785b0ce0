// Memory that runs short: one allocation of the C++ runtime, which library and tests share, fails.

#include "tests/support/AllocationFault.h"

#include <cstdlib>

namespace {

int g_untilFault = 0;
int g_live = 0;

void* __cdecl AllocateOrFail(std::size_t size)
{
    if (--g_untilFault == 0) {
        return nullptr;
    }
    ++g_live;
    return std::malloc(size);
}

void __cdecl Free(void* memory)
{
    g_live -= memory == nullptr ? 0 : 1;
    std::free(memory);
}

} // namespace

AllocationFault::AllocationFault(int allocation)
    : m_malloc("libstdc++-6.dll", "malloc", &AllocateOrFail), m_free("libstdc++-6.dll", "free", &Free)
{
    g_untilFault = allocation;
    g_live = 0;
}

AllocationFault::~AllocationFault()
{
    g_untilFault = 0;
}

bool AllocationFault::Happened() const
{
    return g_untilFault <= 0;
}

int AllocationFault::Live() const
{
    return g_live;
}
