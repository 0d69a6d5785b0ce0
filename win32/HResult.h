// HRESULTs of Win32 errors.

#pragma once

#include <windows.h>

// Returns the HRESULT of a Win32 error. A code that is 0 or negative already is an HRESULT.
inline HRESULT HResultFromWin32(DWORD error) noexcept
{
    const auto code = static_cast<HRESULT>(error);
    return code <= 0 ? code : static_cast<HRESULT>((error & 0xFFFFU) | 0x80070000U);
}
