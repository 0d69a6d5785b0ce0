// The entries that FindFirstFileW and FindNextFileW return.

#pragma once

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <string_view>

inline std::wstring_view EntryName(const WIN32_FIND_DATAW& entry) noexcept
{
    return {entry.cFileName, ::wcsnlen(entry.cFileName, std::size(entry.cFileName))};
}

inline bool IsDotEntry(const WIN32_FIND_DATAW& entry) noexcept
{
    return EntryName(entry) == L"." || EntryName(entry) == L"..";
}

inline bool IsDirectory(const WIN32_FIND_DATAW& entry) noexcept
{
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

inline bool IsReparsePoint(const WIN32_FIND_DATAW& entry) noexcept
{
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// Such a name leads out of its directory; a damaged volume or a hostile server may return it.
inline bool NameHasSeparator(std::wstring_view name) noexcept
{
    return std::any_of(name.begin(), name.end(),
                       [](wchar_t character) { return character == L'\\' || character == L'/'; });
}
