// The overlap of two file patterns.

#pragma once

#include <string_view>

// Returns whether some name matches both patterns, which may both hold '*' (any run of characters) and '?' (one
// character). Case-sensitive. Allocates nothing.
[[nodiscard]] bool IsSpecMatch(std::wstring_view first, std::wstring_view second) noexcept;
