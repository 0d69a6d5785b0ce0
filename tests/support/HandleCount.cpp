// How many handles the process has open.

#include "tests/support/HandleCount.h"

#include <windows.h>

namespace {

// The C++ runtime keeps handles of its own from a thread's first exception on: they are nobody's leak.
bool ThrowOnce()
{
    try {
        throw 0;
    } catch (int) {
        return true;
    }
}

// Every value is asked for: Wine's own count always answers 0.
int CountHandlesBelow(ULONG_PTR end)
{
    constexpr ULONG_PTR kStep = 4;
    const DWORD lastError = ::GetLastError();
    int count = 0;
    for (ULONG_PTR value = kStep; value < end; value += kStep) {
        DWORD flags = 0;
        if (::GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) {
            ++count;
        }
    }
    ::SetLastError(lastError);
    return count;
}

} // namespace

int OpenHandleCount()
{
    [[maybe_unused]] static const bool thrown = ThrowOnce();
    constexpr ULONG_PTR kHighestHandle = 0x2000;
    return CountHandlesBelow(kHighestHandle);
}

int OpenLowHandleCount()
{
    constexpr ULONG_PTR kEnd = 0x200;
    return CountHandlesBelow(kEnd);
}
