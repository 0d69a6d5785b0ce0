// Expansion of environment variables in a BSTR.

#include <Kestrovane.h>

#include "frame/RuntimeOutput.h"

#include <windows.h>

#include <cstdlib>
#include <cwchar>

namespace {

constexpr DWORD kRoom = MAX_PATH; // characters, terminator included

// The number of characters that the expansion needs, terminator included; 0 after a failure, which is printed.
DWORD Expand(const wchar_t* text, wchar_t* expanded)
{
    const DWORD needed = ::ExpandEnvironmentStringsW(text, expanded, kRoom);
    if (needed == 0) {
        const DWORD error = ::GetLastError();
        RuntimePrintf("ExpandEnvironmentStrings failed due to error %d.\n", static_cast<int>(error));
    }
    return needed;
}

} // namespace

void DoExpandEnvironmentStrings(CComBSTR& text)
{
    if (text.m_str == nullptr || std::wcschr(text.m_str, L'%') == nullptr) {
        return;
    }
    wchar_t expanded[kRoom] = {};
    const DWORD needed = Expand(text.m_str, expanded);
    if (needed == 0) {
        return;
    }
    if (needed <= kRoom) {
        text = expanded;
        return;
    }
    // Windows is told the same small size again on purpose: hosts rely on long expansions being cut. The buffer is
    // cleared, so that a text which Windows does not complete still ends inside it, and it is never given back.
    auto* const overlong = static_cast<wchar_t*>(std::calloc(needed, sizeof(wchar_t)));
    if (overlong != nullptr) {
        Expand(text.m_str, overlong);
    }
    text = overlong;
} // NOLINT(clang-analyzer-unix.Malloc): the buffer is kept, as said above
