// Texts on their way between Windows (UTF-16) and output, manifests and command lines (UTF-8).

#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace agent {

std::string Utf8(std::wstring_view text); // unpaired surrogates become U+FFFD
std::wstring Wide(std::string_view utf8);

// Whether every surrogate has its partner: only then UTF-8 can carry the text there and back.
bool IsWellFormed(std::wstring_view text);

// Windows' text for an error, without its line end, followed by the code: "Access denied. (error 5)".
std::wstring SystemReason(DWORD error);

bool EqualIgnoringCase(std::wstring_view first, std::wstring_view second);

} // namespace agent
