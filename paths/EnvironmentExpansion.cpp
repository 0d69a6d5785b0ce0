// Expansion of environment variables in a BSTR.

#include <Kestrovane.h>

#include "win32/CrtPrintf.h"

#include <windows.h>

#include <cstdlib>
#include <cwchar>

namespace {

constexpr DWORD kCapacity = MAX_PATH; // characters, terminator included

// Returns the number of characters that the expansion needs, terminator included; 0 after a failure, which is printed.
DWORD Expand(const wchar_t* string, wchar_t* expanded)
{
    const DWORD needed = ::ExpandEnvironmentStringsW(string, expanded, kCapacity);
    if (needed == 0) {
        const DWORD error = ::GetLastError();
        CrtPrintf("ExpandEnvironmentStrings failed due to error %d.\n", static_cast<int>(error));
    }
    return needed;
}

} // namespace

void DoExpandEnvironmentStrings(CComBSTR& string)
{
    if (string.m_str == nullptr || std::wcschr(string.m_str, L'%') == nullptr) {
        return;
    }
    wchar_t expanded[kCapacity + 1] = {}; // one more than Windows may fill: the string ends in any case
    const DWORD needed = Expand(string.m_str, expanded);
    if (needed == 0) {
        return;
    }
    if (needed <= kCapacity) {
        string = expanded;
        return;
    }
    // Deliberately the same small size again: hosts rely on long expansions being cut. The buffer is zeroed, so that an
    // incomplete expansion still ends inside it, and it is never freed.
    auto* const incomplete = static_cast<wchar_t*>(std::calloc(needed, sizeof(wchar_t)));
    if (incomplete != nullptr) {
        Expand(string.m_str, incomplete);
    }
    string = incomplete;
} // NOLINT(clang-analyzer-unix.Malloc): deliberately kept
