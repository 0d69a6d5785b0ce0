// Comparisons without regard to case, as the file system compares names.

#pragma once

#include <string>
#include <string_view>

namespace agent {

bool EqualIgnoringCase(std::wstring_view first, std::wstring_view second);

// The order of sets and maps whose keys are names or paths.
struct LessIgnoringCase {
    using is_transparent = void;
    bool operator()(std::wstring_view first, std::wstring_view second) const;
};

} // namespace agent
