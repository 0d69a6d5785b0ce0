// File patterns: '*' is any run of characters, '?' exactly one. Case does not matter.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace agent {

// "*.*" matches every name, as everywhere in Windows.
bool MatchesPattern(std::wstring_view name, std::wstring_view pattern);

bool MatchesAny(std::wstring_view name, const std::vector<std::wstring>& patterns);

} // namespace agent
