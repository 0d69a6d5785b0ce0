// What a backup holds: written by `backup`, read by `restore`.

#pragma once

#include "agent/Sha256.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace agent {

constexpr const wchar_t* kManifestName = L"kestrovane-manifest.json";

struct ManifestFile {
    std::wstring name; // relative to the original directory
    FileDigest digest;
    std::int64_t modified = 0; // 100-nanosecond steps since 1601, UTC
};

struct Manifest {
    std::wstring original; // the directory that was backed up, absolute
    bool complete = true;  // false when the backup was interrupted or some files failed
    std::vector<std::wstring> directories;
    std::vector<ManifestFile> files;
};

// Replaces the manifest of `backup` as a whole. @return a reason when it could not be written.
std::optional<std::wstring> WriteManifest(const std::wstring& backup, const Manifest& manifest);

// A manifest as it was read, with the entries that cannot be trusted (name and reason) kept apart.
struct ReadManifest {
    Manifest manifest;
    std::vector<std::pair<std::wstring, std::wstring>> refused;
};

// @return the manifest, or a reason in `error` when there is none to be had.
std::optional<ReadManifest> LoadManifest(const std::wstring& backup, std::wstring& error);

// Why a relative name must not be restored; nothing for an ordinary name. Names that leave their directory (a ".."
// part, a drive, a stream), and those that Windows would take for something else, are refused.
std::optional<std::wstring> RefuseName(const std::wstring& name);

} // namespace agent
