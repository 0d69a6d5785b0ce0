// The process's current directory, as far as the library reads it, and its restoration.

#include "paths/CurrentDirectory.h"

#include "frame/UniqueResource.h"

#include <windows.h>

#include <direct.h>

#include <cerrno>

namespace {

std::wstring ReadOverlongCurrentDirectory()
{
    std::wstring directory(::GetCurrentDirectoryW(0, nullptr), L'\0');
    const DWORD length = ::GetCurrentDirectoryW(static_cast<DWORD>(directory.size()), directory.data());
    directory.resize(length < directory.size() ? length : 0);
    return directory;
}

} // namespace

std::wstring ReadCurrentDirectory()
{
    wchar_t directory[MAX_PATH] = {};
    return ::_wgetcwd(directory, MAX_PATH) == nullptr ? std::wstring() : std::wstring(directory);
}

bool ChangeCurrentDirectory(const std::wstring& directory)
{
    return ::_wchdir(directory.c_str()) != -1;
}

CurrentDirectoryGuard::CurrentDirectoryGuard() : m_saved(ReadCurrentDirectory())
{
    if (m_saved.empty()) {
        const LastErrorKeeper keeper;
        m_overlong = ReadOverlongCurrentDirectory();
    }
}

CurrentDirectoryGuard::~CurrentDirectoryGuard()
{
    const LastErrorKeeper keeper;
    const int errnoBefore = errno;
    ChangeCurrentDirectory(m_saved.empty() ? m_overlong : m_saved);
    errno = errnoBefore;
}
