// What a plain program does for a backup.

#pragma once

#include <string>

namespace bench {

// Copies a tree with std::filesystem and hashes each copy once with SHA-256.
void PlainBackup(const std::wstring& source, const std::wstring& target);

} // namespace bench
