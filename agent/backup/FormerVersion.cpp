// The version before a backup.

#include "agent/backup/FormerVersion.h"

#include "agent/platform/Paths.h"

namespace agent {

FormerVersion::FormerVersion(const std::vector<Version>& versions)
{
    const std::vector<Version> newestFirst(versions.rbegin(), versions.rend());
    for (const Version& version : newestFirst) {
        std::wstring error;
        auto read = LoadManifest(version.folder, error);
        if (read && read->isIntact) {
            m_versions.push_back({version, std::move(*read)});
            if (m_versions.back().read.manifest.complete) {
                break;
            }
        }
    }
    for (const LoadedVersion& version : m_versions) {
        for (const ManifestFile& file : version.read.manifest.files) {
            m_files.emplace(file.name, Entry{&file, &version.version}); // the newest one stays
        }
    }
}

std::wstring FormerVersion::Original() const
{
    return m_versions.empty() ? L"" : m_versions.front().read.manifest.original;
}

std::vector<ManifestFile> FormerVersion::Files() const
{
    return m_versions.empty() ? std::vector<ManifestFile>() : m_versions.back().read.manifest.files;
}

const ManifestFile* FormerVersion::Find(const std::wstring& name) const
{
    const auto entry = m_files.find(name);
    return entry == m_files.end() ? nullptr : entry->second.file;
}

bool FormerVersion::HoldsUnchanged(const ManifestFile& former, const FileInformation& now) const
{
    if (former.modified == 0 || former.modified != now.modified || former.digest.size != now.size) {
        return false;
    }
    const auto copy = ReadInformation(CopyOf(former));
    return copy && !copy->IsDirectory() && copy->size == former.digest.size;
}

std::wstring FormerVersion::CopyOf(const ManifestFile& file) const
{
    return Join(m_files.at(file.name).version->folder, file.stored);
}

} // namespace agent
