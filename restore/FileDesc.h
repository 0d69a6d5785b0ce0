// A file description: a directory, a file pattern and whether everything below the directory is included.

#pragma once

#include <Kestrovane.h>

#include <string_view>

class FileDesc {
public:
    // Takes upper-case copies. Null strings are empty; an empty directory counts as the root "\".
    // Throws CAtlException (E_OUTOFMEMORY) if a copy cannot be allocated.
    FileDesc(const wchar_t* path, const wchar_t* spec, bool recursive);

    // Whether some name matches both patterns, which may both hold '*' and '?'. Case-sensitive.
    [[nodiscard]] static bool IsSpecMatch(const wchar_t* first, const wchar_t* second);

    // Whether some file matches both descriptions. Throws CAtlException if two folders must be compared and memory is
    // short.
    [[nodiscard]] bool Overlaps(FileDesc& other);

    // The directory, always with a trailing backslash. Throws CAtlException if it cannot be appended.
    [[nodiscard]] const wchar_t* Path();
    [[nodiscard]] const wchar_t* Spec() const noexcept { return m_spec.m_str; }
    [[nodiscard]] bool IsRecursive() const noexcept { return m_recursive; }

private:
    [[nodiscard]] std::wstring_view PathWithoutBackslash() const noexcept;
    [[nodiscard]] bool IsInTreeOf(const FileDesc& root) const noexcept;
    [[nodiscard]] bool PathOverlaps(FileDesc& other);

    CComBSTR m_path; // its trailing backslash is appended at the first use, which most comparisons do not need
    CComBSTR m_spec;
    bool m_recursive;
};
