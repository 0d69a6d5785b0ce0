// A file description: a directory, a file specification and whether everything below the directory is meant, too.

#pragma once

#include <Kestrovane.h>

class FileDesc {
public:
    // Takes upper-case copies. Null texts are empty; an empty directory is taken as the root "\".
    // Throws CAtlException (E_OUTOFMEMORY) when a copy cannot be made.
    FileDesc(const wchar_t* path, const wchar_t* spec, bool recursive);

    // Whether some name fits both specifications, which may both hold '*' and '?'. Case counts.
    // Throws CAtlException (E_OUTOFMEMORY) when there is no memory for a row of answers.
    static bool IsSpecMatch(const wchar_t* first, const wchar_t* second);

    // Whether the directories of two descriptions overlap, as far as their recursive flags reach.
    bool PathOverlaps(const FileDesc& other) const;

    // Whether some file fits both descriptions.
    bool Overlaps(const FileDesc& other) const;

    const wchar_t* Path() const noexcept { return m_path.m_str; }
    const wchar_t* Spec() const noexcept { return m_spec.m_str; }
    bool IsRecursive() const noexcept { return m_recursive; }

private:
    bool IsInTreeOf(const FileDesc& root) const;

    CComBSTR m_path; // ends with a backslash
    CComBSTR m_spec;
    bool m_recursive;
};
