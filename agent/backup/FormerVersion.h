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

    // Takes the newest complete one of the versions whose manifest can be read and trusted, and what incomplete ones after
    // it hold: a backup that failed must not make the next one copy everything again.
    explicit FormerVersion(const std::vector<Version>& versions);

    FormerVersion(FormerVersion&&) = default;
    FormerVersion& operator=(FormerVersion&&) = default;

    // The directory that it is a version of; empty without a version.
    [[nodiscard]] std::wstring Original() const;

    // The entry of a file, nothing for a new one.
    [[nodiscard]] const ManifestFile* Find(const std::wstring& name) const;

    // Whether the file is still as it was, and its copy is there. Times and sizes decide, not the content.
    [[nodiscard]] bool HoldsUnchanged(const ManifestFile& former, const FileInformation& now) const;

    [[nodiscard]] std::wstring CopyOf(const ManifestFile& file) const;

    // The files of the complete one.
    [[nodiscard]] std::vector<ManifestFile> Files() const;

private:
    struct Entry {
        const ManifestFile* file;
        const Version* version;
    };

    std::vector<LoadedVersion> m_versions; // the newest first
    std::unordered_map<std::wstring, Entry> m_files;
};

} // namespace agent
