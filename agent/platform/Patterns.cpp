// File patterns.

#include "agent/platform/Patterns.h"

#include "agent/platform/IgnoringCase.h"

#include <algorithm>

namespace agent {

namespace {

// Both in one case. After a mismatch, the last '*' takes one character more.
bool Matches(std::wstring_view name, std::wstring_view pattern)
{
    std::size_t n = 0;
    std::size_t p = 0;
    std::size_t star = std::wstring_view::npos;
    std::size_t afterStar = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == L'*') {
            star = p++;
            afterStar = n;
        } else if (p < pattern.size() && (pattern[p] == L'?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (star != std::wstring_view::npos) {
            p = star + 1;
            n = ++afterStar;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(L'*', p) == std::wstring_view::npos;
}

} // namespace

bool MatchesPattern(std::wstring_view name, std::wstring_view pattern)
{
    return pattern == L"*" || pattern == L"*.*" || Matches(FoldCase(name), FoldCase(pattern));
}

bool MatchesAny(std::wstring_view name, const std::vector<std::wstring>& patterns)
{
    return std::any_of(patterns.begin(), patterns.end(),
                       [name](const std::wstring& pattern) { return MatchesPattern(name, pattern); });
}

} // namespace agent
