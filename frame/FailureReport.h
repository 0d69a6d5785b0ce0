// Reports of Win32 errors in the log.

#pragma once

#include "win32/UniqueResource.h"

#include <Kestrovane.h>

#include <windows.h>

// Returns the system's message for an error code; null if there is none.
[[nodiscard]] UniqueLocalMemory<wchar_t> FormatSystemError(DWORD error);

// Logs a title line, the HRESULT and, unless it is null, the system's message for `error`. The format of the title
// takes `name` (wide) and the code. The thread's last error is unchanged, even if the logger changes it.
void LogWin32Failure(VssFileManagerLogFn log, int level, const char* titleFormat, const wchar_t* name, DWORD error,
                     const wchar_t* message);
