// The process's current directory: reading, changing and restoring it.

#include "paths/CurrentDirectory.h"

#include "win32/LastErrorGuard.h"

#include <windows.h>

#include <direct.h>

#include <cerrno>
#include <cwchar>

namespace {

// For a directory that does not fit the runtime's buffer. Empty if it cannot be read.
std::wstring ReadLongCurrentDirectory()
{
    std::wstring directory(::GetCurrentDirectoryW(0, nullptr), L'\0');
    const DWORD length = ::GetCurrentDirectoryW(static_cast<DWORD>(directory.size()), directory.data());
    directory.resize(length < directory.size() ? length : 0);
    return directory;
}

std::wstring ReadDirectoryToRestore()
{
    if (std::optional<std::wstring> directory = ReadCurrentDirectory()) {
        return *std::move(directory);
    }
    const LastErrorGuard keepLastError;
    return ReadLongCurrentDirectory();
}

} // namespace

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

CurrentDirectoryGuard::CurrentDirectoryGuard() : m_saved(ReadDirectoryToRestore()) {}

CurrentDirectoryGuard::~CurrentDirectoryGuard()
{
    if (!CanRestore()) {
        return;
    }
    const LastErrorGuard keepLastError;
    const int errnoBefore = errno;
    ChangeCurrentDirectory(m_saved);
    errno = errnoBefore;
}
