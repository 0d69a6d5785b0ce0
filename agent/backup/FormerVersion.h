// The version before a backup, and what it holds of the files that did not change since.

#pragma once

#include "agent/backup/Versions.h"

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace agent {

class FormerVersion {
public:
    FormerVersion() = default; // no version

    // Takes the newest of the versions whose manifest can be read and trusted.
    explicit FormerVersion(const std::vector<Version>& versions);

    FormerVersion(FormerVersion&&) = default;
    FormerVersion& operator=(FormerVersion&&) = default;

    // The directory that it is a version of; empty without a version.
    [[nodiscard]] const std::wstring& Original() const { return m_read.manifest.original; }

    // The entry of a file, nothing for a new one.
    [[nodiscard]] const ManifestFile* Find(const std::wstring& name) const;

    // Whether the file is still as it was, and its copy is there. Times and sizes decide, not the content.
    [[nodiscard]] bool HoldsUnchanged(const ManifestFile& former, const FileInformation& now) const;

    [[nodiscard]] std::wstring CopyOf(const ManifestFile& file) const;

    [[nodiscard]] const std::vector<ManifestFile>& Files() const { return m_read.manifest.files; }

private:
    Version m_version;
    ReadManifest m_read;
    std::unordered_map<std::wstring, const ManifestFile*> m_files;
};

} // namespace agent
