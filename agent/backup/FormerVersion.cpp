// The version before a backup.

#include "agent/backup/FormerVersion.h"

#include "agent/platform/Paths.h"

namespace agent {

FormerVersion::FormerVersion(const std::vector<Version>& versions)
{
    const std::vector<Version> newestFirst(versions.rbegin(), versions.rend());
    for (const Version& version : newestFirst) {
        std::wstring error;
        if (auto read = LoadManifest(version.folder, error); read && read->isIntact) {
            m_version = version;
            m_read = std::move(*read);
            break;
        }
    }
    m_files.reserve(m_read.manifest.files.size());
    for (const ManifestFile& file : m_read.manifest.files) {
        m_files.emplace(file.name, &file);
    }
}

const ManifestFile* FormerVersion::Find(const std::wstring& name) const
{
    const auto file = m_files.find(name);
    return file == m_files.end() ? nullptr : file->second;
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
    return Join(m_version.folder, file.stored);
}

} // namespace agent
