// What the new content of a restored file must be, and what it gets besides.

#pragma once

#include "agent/backup/Manifest.h"

#include <windows.h>

#include <optional>
#include <string>

namespace agent {

struct RestoreFailure {
    std::wstring subject; // the file that the reason is about
    std::wstring reason;
};

// The attributes that a restore brings back.
constexpr DWORD kRestoredAttributes =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;

// Whether the new content must be on the disk before it takes its place. A file that replaces another one must:
// otherwise a power failure could leave neither. For a new file nothing is lost, and flushing each of many small files
// takes far longer than writing them.
enum class Durability { kFlushed, kUnflushed };

// The failure of a copy in the backup that differs from its manifest.
RestoreFailure Damaged(const std::wstring& source);

// Fills a cache file, which is on the disk then, and compares it with the manifest. `target` is the file whose place it
// is to take, for the message.
std::optional<RestoreFailure> FillCacheFile(const std::wstring& cacheFile, const std::wstring& source,
                                            const ManifestFile& file, const std::wstring& target);

// Sets times and attributes of a file or directory. 0 stands for what is not known, and stays as it is. On failure the
// last error tells why.
bool SetInformation(HANDLE file, FileTime created, FileTime modified, DWORD attributes);
bool SetInformation(const std::wstring& path, FileTime created, FileTime modified, DWORD attributes);

} // namespace agent
