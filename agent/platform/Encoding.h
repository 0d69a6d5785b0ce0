// Strings between Windows (UTF-16) and output, manifests and command lines (UTF-8).

#pragma once

#include <string>
#include <string_view>

namespace agent {

std::string Utf8(std::wstring_view string); // unpaired surrogates become U+FFFD
std::wstring Wide(std::string_view utf8);

// Whether every surrogate has its partner: only then UTF-8 can carry the string there and back.
bool IsWellFormed(std::wstring_view string);

} // namespace agent
