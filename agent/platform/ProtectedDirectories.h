// Directories that no command deletes.

#pragma once

#include <optional>
#include <string>

namespace agent {

// Why a directory must not be deleted: it is the root of a volume or share, or it holds the Windows directory or lies
// in it. Identities of the file system decide, so that every spelling is recognised: \\?\ and \\.\ prefixes, shares,
// short names and junctions. Nothing for an ordinary directory.
std::optional<std::wstring> WhyProtected(const std::wstring& directory);

} // namespace agent
