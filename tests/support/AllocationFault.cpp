// Memory that runs short: one allocation of the C++ runtime, which library and tests share, fails.

#include "tests/support/AllocationFault.h"

#include <cstdlib>

namespace {

int g_untilFault = 0;

void* __cdecl AllocateOrFail(std::size_t size)
{
    return --g_untilFault == 0 ? nullptr : std::malloc(size);
}

} // namespace

AllocationFault::AllocationFault(int allocation) : m_malloc("libstdc++-6.dll", "malloc", &AllocateOrFail)
{
    g_untilFault = allocation;
}

AllocationFault::~AllocationFault()
{
    g_untilFault = 0;
}

bool AllocationFault::Happened() const
{
    return g_untilFault <= 0;
}
