// Removing a directory with everything in it.

#pragma once

#include <optional>
#include <string>

namespace agent {

// Links are removed, not followed, and read-only files are removed, too. @return a reason for the first file or
// directory that stays; the others are removed all the same.
std::optional<std::wstring> RemoveTree(const std::wstring& directory);

} // namespace agent
