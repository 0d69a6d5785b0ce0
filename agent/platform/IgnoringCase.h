// Comparisons without regard to case, as the file system compares names.

#pragma once

#include <string>
#include <string_view>

namespace agent {

bool EqualIgnoringCase(std::wstring_view first, std::wstring_view second);

// The same string for all spellings of a name that differ only in case: a key for look-ups.
std::wstring FoldCase(std::wstring_view string);

// The order of sets and maps whose keys are names or paths.
struct LessIgnoringCase {
    using is_transparent = void;
    bool operator()(std::wstring_view first, std::wstring_view second) const;
};

} // namespace agent
