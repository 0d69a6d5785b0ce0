// What a version of a backup holds: written by `backup`, read by `restore`, `verify` and `show`.

#pragma once

#include "agent/platform/Digest.h"
#include "agent/platform/FileInformation.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace agent {

constexpr const wchar_t* kManifestName = L"kestrovane-manifest.json";

struct ManifestDirectory {
    std::wstring name;     // relative to the original directory
    FileTime created = 0;  // 0: not known
    FileTime modified = 0; // 0: not known
    DWORD attributes = 0;  // 0: not known
    std::wstring security; // SDDL; empty: not backed up
};

struct ManifestFile {
    std::wstring name;   // relative to the original directory
    std::wstring stored; // relative to the version's folder; differs from the name where two names differ only in case
    FileDigest digest;
    FileTime created = 0;  // 0: not known
    FileTime modified = 0; // 0: not known
    DWORD attributes = 0;  // 0: not known
    std::wstring security; // SDDL; empty: not backed up
};

struct Manifest {
    std::wstring original;  // the directory that was backed up, absolute
    bool complete = true;   // false when the backup was interrupted or some files failed
    bool selection = false; // some files were left out by a filter
    std::wstring started;   // UTC: 2026-11-21T15:04:05Z
    std::wstring finished;
    std::vector<std::wstring> filters;
    std::vector<std::wstring> excludes;
    ManifestDirectory root;                     // the original directory itself, without a name
    std::vector<ManifestDirectory> directories; // parents first
    std::vector<ManifestFile> files;
    std::vector<std::wstring> notBackedUp; // links and named streams, relative to the original directory
};

// Replaces the manifest in `folder` in one step. @return a reason when it could not be written.
std::optional<std::wstring> WriteManifest(const std::wstring& folder, const Manifest& manifest);

// A manifest as it was read. The entries that cannot be trusted (name and reason) are kept apart.
struct ReadManifest {
    Manifest manifest;
    bool isIntact = true; // as it was written; formats before 3 cannot tell
    std::vector<std::pair<std::wstring, std::wstring>> rejected;
};

constexpr const wchar_t* kManifestChanged =
    L"the manifest was changed or damaged after the backup: names, times and attributes may be wrong";

// @return the manifest of format 1, 2 or 3 in `folder`, or a reason in `error` when there is none that can be trusted.
std::optional<ReadManifest> LoadManifest(const std::wstring& folder, std::wstring& error);

} // namespace agent
