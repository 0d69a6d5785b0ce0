// The overlap of two file patterns.

#include "restore/SpecMatch.h"

bool IsSpecMatch(std::wstring_view first, std::wstring_view second) noexcept
{
    return SpecMatcher([](wchar_t a, wchar_t b) { return a == b || a == L'?' || b == L'?'; }).Match(first, second);
}
