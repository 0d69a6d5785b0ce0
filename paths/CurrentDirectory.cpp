// The process's current directory: reading, changing and restoring it.

#include "paths/CurrentDirectory.h"

#include "win32/LastErrorGuard.h"

#include <windows.h>

#include <direct.h>

#include <cerrno>
#include <cwchar>

std::optional<std::wstring> ReadCurrentDirectory()
{
    wchar_t directory[MAX_PATH];
    if (::_wgetcwd(directory, MAX_PATH) == nullptr) {
        return std::nullopt;
    }
    return std::wstring(directory, ::wcsnlen(directory, MAX_PATH));
}

bool ChangeCurrentDirectory(const std::wstring& directory)
{
    return ::_wchdir(directory.c_str()) != -1;
}

CurrentDirectoryGuard::CurrentDirectoryGuard() : m_saved(ReadCurrentDirectory()) {}

CurrentDirectoryGuard::~CurrentDirectoryGuard()
{
    if (!m_saved) {
        return;
    }
    const LastErrorGuard keepLastError;
    const int errnoBefore = errno;
    ChangeCurrentDirectory(*m_saved);
    errno = errnoBefore;
}

bool CurrentDirectoryGuard::Enter(const std::wstring& directory) const
{
    if (m_saved) {
        return ChangeCurrentDirectory(directory);
    }
    const DWORD attributes = ::GetFileAttributesW(directory.c_str());
    const bool isDirectory = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (!isDirectory) {
        errno = ENOENT;
    }
    return isDirectory;
}
