// Plain statements of the rules of file patterns and restore mappings, independent of the library's way to apply them.

#pragma once

#include <Kestrovane.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Whether some name matches both patterns.
bool SomeNameMatches(std::wstring_view first, std::wstring_view second);

// The path after the mapping; nothing if none covers the file.
std::optional<std::wstring> Mapped(const std::vector<VSS_ALTERNATE_MAPPING>& mappings, const std::wstring& path,
                                   const std::wstring& spec, bool ignoresBackslash);
