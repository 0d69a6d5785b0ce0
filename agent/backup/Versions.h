// The versions of a backup: one folder each below the target, named after its time.

#pragma once

#include "agent/backup/Manifest.h"

#include <optional>
#include <string>
#include <vector>

namespace agent {

// A version's folder. A backup of format 1 has no versions: its files lie directly in the target, and so its one
// version has an empty name.
struct Version {
    std::wstring name;   // of the folder: 2026-11-21T15-04-05Z
    std::wstring folder; // full path
};

// A version with its manifest.
struct LoadedVersion {
    Version version;
    ReadManifest read;
};

// Characters of the longest name of a version.
constexpr std::size_t kLongestVersionName = 24;

// Whether a name has the form that versions have.
bool IsVersionName(const std::wstring& name);

// The versions below a target, the oldest first, with or without a manifest.
std::vector<Version> ListVersions(const std::wstring& target);

// The version that a command takes: the one with the name `at`, or, where `at` is empty, the newest complete one; where
// none is complete, the newest that has a manifest. A target that is itself a version's folder, or a backup of format
// 1, is taken as it is. @return nothing, with subject and reason in `error`, when there is none that can be read.
struct VersionError {
    std::wstring subject;
    std::wstring reason;
};
std::optional<LoadedVersion> FindVersion(const std::wstring& target, const std::wstring& at, VersionError& error);

// Creates the folder of a new version, whose name sorts after those of all others. @return nothing when that fails; the
// last error tells why.
std::optional<Version> CreateVersion(const std::wstring& target);

} // namespace agent
