// Matching of file descriptions.

#include "restore/FileDesc.h"

#include <cstddef>
#include <cwchar>
#include <memory>
#include <new>

namespace {

constexpr LCID kUserDefaultLocale = 0x400;

void MakeUpperCase(CComBSTR& text)
{
    if (text.Length() > 0) {
        ::CharUpperBuffW(text.m_str, text.Length());
    }
}

void EndWithBackslash(CComBSTR& path)
{
    const unsigned int length = path.Length();
    if (length > 0 && path.m_str[length - 1] == L'\\') {
        return;
    }
    const HRESULT appended = path.Append(L"\\", 1);
    if (FAILED(appended)) {
        throw CAtlException(appended);
    }
}

// Two specifications, and for each pair of their tails whether some name fits both. The answer for a pair rests on
// those for the pairs with one or both tails a character shorter, so the rows are filled from the last character of
// the first specification to its first, and only the row before is kept: work is the product of the lengths, whatever
// the number of stars, and memory one row.
class SpecMatcher {
public:
    SpecMatcher(const wchar_t* first, const wchar_t* second)
        : m_first(first),
          m_second(second),
          m_firstLength(std::wcslen(first)),
          m_secondLength(std::wcslen(second)),
          m_row(new (std::nothrow) bool[m_secondLength + 1])
    {
        if (m_row == nullptr) {
            throw CAtlException(E_OUTOFMEMORY);
        }
    }

    bool Match()
    {
        FillRowOfEmptyFirst();
        for (std::size_t i = m_firstLength; i-- > 0;) {
            FillRow(m_first[i]);
        }
        return m_row[0];
    }

private:
    // Nothing but stars fits the empty name.
    void FillRowOfEmptyFirst()
    {
        m_row[m_secondLength] = true;
        for (std::size_t j = m_secondLength; j-- > 0;) {
            m_row[j] = m_second[j] == L'*' && m_row[j + 1];
        }
    }

    // Turns the row of the tail after `character` into the row of the tail that begins with it.
    void FillRow(wchar_t character)
    {
        bool bothShorter = m_row[m_secondLength]; // the answer for both tails without their first character
        m_row[m_secondLength] = character == L'*' && bothShorter;
        for (std::size_t j = m_secondLength; j-- > 0;) {
            const bool firstShorter = m_row[j];
            const bool secondShorter = m_row[j + 1];
            if (character == L'*' || m_second[j] == L'*') {
                m_row[j] = firstShorter || secondShorter;
            } else {
                m_row[j] = FitsOneCharacter(character, m_second[j]) && bothShorter;
            }
            bothShorter = firstShorter;
        }
    }

    static bool FitsOneCharacter(wchar_t first, wchar_t second)
    {
        return first == second || first == L'?' || second == L'?';
    }

    const wchar_t* m_first;
    const wchar_t* m_second;
    std::size_t m_firstLength;
    std::size_t m_secondLength;
    std::unique_ptr<bool[]> m_row;
};

} // namespace

FileDesc::FileDesc(const wchar_t* path, const wchar_t* spec, bool recursive)
    : m_path(path), m_spec(spec == nullptr ? L"" : spec), m_recursive(recursive)
{
    MakeUpperCase(m_path);
    MakeUpperCase(m_spec);
    EndWithBackslash(m_path);
}

bool FileDesc::IsSpecMatch(const wchar_t* first, const wchar_t* second)
{
    return SpecMatcher(first, second).Match();
}

bool FileDesc::IsInTreeOf(const FileDesc& root) const
{
    return std::wcsncmp(Path(), root.Path(), root.m_path.Length()) == 0;
}

bool FileDesc::PathOverlaps(const FileDesc& other) const
{
    if (!m_recursive && !other.m_recursive) {
        return ::VarBstrCmp(m_path, other.m_path, kUserDefaultLocale, 0) == static_cast<HRESULT>(VARCMP_EQ);
    }
    return (m_recursive && other.IsInTreeOf(*this)) || (other.m_recursive && IsInTreeOf(other));
}

bool FileDesc::Overlaps(const FileDesc& other) const
{
    return IsSpecMatch(Spec(), other.Spec()) && PathOverlaps(other);
}

bool IsFileDescMatch(std::wstring& path1, std::wstring& spec1, bool recursive1, std::wstring& path2,
                     std::wstring& spec2, bool recursive2)
{
    const FileDesc first(path1.c_str(), spec1.c_str(), recursive1);
    const FileDesc second(path2.c_str(), spec2.c_str(), recursive2);
    return first.Overlaps(second);
}
