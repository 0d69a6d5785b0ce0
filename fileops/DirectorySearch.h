// A search of the runtime library in one directory.

#pragma once

#include "win32/FindData.h"
#include "win32/UniqueResource.h"

#include <windows.h>

#include <io.h>

#include <cerrno>
#include <cwchar>
#include <string>
#include <string_view>

// Points to one entry at a time, at first to the first one.
class DirectorySearch {
public:
    // `base` is normalised. A directory with an embedded NUL cannot be searched: the runtime would search the directory
    // before the NUL.
    DirectorySearch(const std::wstring& base, const std::wstring& filter)
    {
        if (IsSearchable(base)) {
            m_search.Reset(::_wfindfirst64i32((base + filter).c_str(), &m_entry));
        }
    }

    // On failure, errno and the last error are those of an invalid name.
    [[nodiscard]] static bool IsSearchable(const std::wstring& base)
    {
        if (base.find(L'\0') == std::wstring::npos) {
            return true;
        }
        errno = EINVAL;
        ::SetLastError(ERROR_INVALID_NAME);
        return false;
    }

    explicit operator bool() const noexcept { return static_cast<bool>(m_search); }
    bool Next() noexcept { return ::_wfindnext64i32(m_search.Get(), &m_entry) == 0; }

    [[nodiscard]] std::wstring_view Name() const noexcept
    {
        return {m_entry.name, ::wcsnlen(m_entry.name, std::size(m_entry.name))};
    }
    [[nodiscard]] bool IsDirectory() const noexcept { return (m_entry.attrib & _A_SUBDIR) != 0; }
    [[nodiscard]] bool IsSubdirectory() const noexcept
    {
        return IsDirectory() && Name() != L"." && Name() != L".." && !NameHasSeparator(Name());
    }

private:
    _wfinddata64i32_t m_entry = {};
    UniqueCrtSearch m_search;
};
