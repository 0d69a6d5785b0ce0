// Creating directories.

#pragma once

#include <optional>
#include <string>

namespace agent {

// The outermost directory of a path that is missing; empty when the whole path exists.
std::wstring TopmostMissing(const std::wstring& directory);

// Creates a directory with its parents. @return a reason when it does not exist afterwards; the library's own result
// says only that the path is well formed.
std::optional<std::wstring> EnsureDirectory(const std::wstring& directory);

} // namespace agent
