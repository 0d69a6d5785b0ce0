// Comparisons without regard to case, as the file system compares names.

#include "agent/platform/IgnoringCase.h"

#include <windows.h>

namespace agent {

namespace {

int Compare(std::wstring_view first, std::wstring_view second)
{
    return ::CompareStringOrdinal(first.data(), static_cast<int>(first.size()), second.data(),
                                  static_cast<int>(second.size()), TRUE);
}

} // namespace

bool EqualIgnoringCase(std::wstring_view first, std::wstring_view second)
{
    return Compare(first, second) == CSTR_EQUAL;
}

std::wstring FoldCase(std::wstring_view string)
{
    const int length = static_cast<int>(string.size());
    std::wstring folded(string);
    ::LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, string.data(), length, folded.data(), length, nullptr,
                    nullptr, 0);
    return folded;
}

bool LessIgnoringCase::operator()(std::wstring_view first, std::wstring_view second) const
{
    return Compare(first, second) == CSTR_LESS_THAN;
}

} // namespace agent
