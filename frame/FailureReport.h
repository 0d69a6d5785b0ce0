// Turning a Win32 error into log lines.

#pragma once

#include <Kestrovane.h>

#include <windows.h>

// The HRESULT of a Win32 error; a code that is 0 or negative is one already.
inline HRESULT HResultFromWin32(DWORD error) noexcept
{
    const auto code = static_cast<HRESULT>(error);
    return code <= 0 ? code : static_cast<HRESULT>((error & 0xFFFFU) | 0x80070000U);
}

// Logs a title line, the HRESULT and, where Windows has one, its text for `error`. The title's format takes `name`
// (wide) and the code. The thread's last error stays as it is.
void LogWin32Failure(VssFileManagerLogFn log, int level, const char* titleFormat, const wchar_t* name, DWORD error);
