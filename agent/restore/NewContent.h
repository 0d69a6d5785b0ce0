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

// Copies `source` to `path`, flushes the copy and compares it with the manifest. `target` is the file whose place it is to
// take, for the message.
std::optional<RestoreFailure> WriteVerified(const std::wstring& source, const std::wstring& path,
                                            const ManifestFile& file, const std::wstring& target);

// Sets times and attributes of a file or directory. 0 stands for what is not known, and stays as it is. On failure the last
// error tells why.
bool SetInformation(const std::wstring& path, FileTime created, FileTime modified, DWORD attributes);

} // namespace agent
