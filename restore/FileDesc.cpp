// File descriptions and their overlap.

#include "restore/FileDesc.h"

#include "restore/SpecMatch.h"
#include "win32/Bstr.h"

namespace {

constexpr LCID kUserDefaultLocale = 0x400;

void MakeUpperCase(CComBSTR& string)
{
    if (string.Length() > 0) {
        ::CharUpperBuffW(string.m_str, string.Length());
    }
}

std::wstring_view ViewOf(const CComBSTR& string)
{
    return {string.m_str, string.Length()};
}

} // namespace

FileDesc::FileDesc(const wchar_t* path, const wchar_t* spec, bool recursive)
    : m_path(path), m_spec(spec == nullptr ? L"" : spec), m_recursive(recursive)
{
    MakeUpperCase(m_path);
    MakeUpperCase(m_spec);
}

bool FileDesc::IsSpecMatch(const wchar_t* first, const wchar_t* second)
{
    return ::IsSpecMatch(first, second);
}

const wchar_t* FileDesc::Path()
{
    if (!ViewOf(m_path).ends_with(L'\\')) {
        AppendOrThrow(m_path, L"\\", 1);
    }
    return m_path.m_str;
}

std::wstring_view FileDesc::PathWithoutBackslash() const noexcept
{
    std::wstring_view path = ViewOf(m_path);
    if (path.ends_with(L'\\')) {
        path.remove_suffix(1);
    }
    return path;
}

// Compares the paths as if both had their trailing backslash, so that a tree ends at a directory boundary.
bool FileDesc::IsInTreeOf(const FileDesc& root) const noexcept
{
    const std::wstring_view path = PathWithoutBackslash();
    const std::wstring_view top = root.PathWithoutBackslash();
    return path.starts_with(top) && (path.size() == top.size() || path[top.size()] == L'\\');
}

bool FileDesc::PathOverlaps(FileDesc& other)
{
    if (!m_recursive && !other.m_recursive) {
        static_cast<void>(Path());
        static_cast<void>(other.Path());
        return ::VarBstrCmp(m_path, other.m_path, kUserDefaultLocale, 0) == static_cast<HRESULT>(VARCMP_EQ);
    }
    return (m_recursive && other.IsInTreeOf(*this)) || (other.m_recursive && IsInTreeOf(other));
}

bool FileDesc::Overlaps(FileDesc& other)
{
    return ::IsSpecMatch(ViewOf(m_spec), ViewOf(other.m_spec)) && PathOverlaps(other);
}

bool IsFileDescMatch(std::wstring& path1, std::wstring& spec1, bool recursive1, std::wstring& path2,
                     std::wstring& spec2, bool recursive2)
{
    FileDesc first(path1.c_str(), spec1.c_str(), recursive1);
    FileDesc second(path2.c_str(), spec2.c_str(), recursive2);
    return first.Overlaps(second);
}
