// A file of a backup, written anew and verified before it takes anything's place.

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

// Copies `source` to `path`. `target` is the file whose place the copy is to take, for the message.
std::optional<RestoreFailure> WriteNewContent(const std::wstring& source, const std::wstring& path,
                                              const std::wstring& target);

// Whether the new content must be on the disk before it takes its place. A file that replaces another one must:
// otherwise a power failure could leave neither. For a new file nothing is lost, and flushing each of many small files
// takes far longer than writing them.
enum class Durability { kFlushed, kUnflushed };

// Compares the copy of `source` at `path` with the manifest. Any thread may call it.
std::optional<RestoreFailure> VerifyNewContent(const std::wstring& source, const std::wstring& path,
                                               const ManifestFile& file, const std::wstring& target,
                                               Durability durability);

// Sets times and attributes of a file or directory. 0 stands for what is not known, and stays as it is. On failure the
// last error tells why.
bool SetInformation(const std::wstring& path, FileTime created, FileTime modified, DWORD attributes);

} // namespace agent
