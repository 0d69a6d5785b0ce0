// Reports of Win32 errors in the log.

#include "frame/FailureReport.h"

#include "win32/HResult.h"
#include "win32/LastErrorGuard.h"

UniqueLocalMemory<wchar_t> FormatSystemError(DWORD error)
{
    constexpr DWORD kFlags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM;
    constexpr DWORD kUserDefaultLanguage = 0x400;
    const LastErrorGuard keepLastError;
    wchar_t* message = nullptr;
    ::FormatMessageW(kFlags, nullptr, error, kUserDefaultLanguage, reinterpret_cast<wchar_t*>(&message), 0, nullptr);
    return UniqueLocalMemory<wchar_t>(message);
}

void LogWin32Failure(VssFileManagerLogFn log, int level, const char* titleFormat, const wchar_t* name, DWORD error,
                     const wchar_t* message)
{
    const LastErrorGuard keepLastError;
    log(level, titleFormat, name, static_cast<int>(error));
    log(level, "   - Returned HRESULT = 0x%08lx\n", static_cast<unsigned long>(HResultFromWin32(error)));
    if (message != nullptr) {
        log(level, "   - Error text: %S\n", message);
    }
}
