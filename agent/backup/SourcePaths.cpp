// Where a backup reads its files.

#include "agent/backup/SourcePaths.h"

#include "agent/platform/Errors.h"
#include "agent/platform/FileInformation.h"
#include "agent/platform/Paths.h"

namespace agent {

std::optional<std::wstring> SourcePaths::Open(const std::wstring& directory, const std::vector<std::wstring>& snapshots)
{
    m_directory = directory;
    if (auto reason = m_snapshots.Add(snapshots)) {
        return reason;
    }
    if (!m_snapshots.IsEmpty() && !m_snapshots.Covers(directory)) {
        return kNoSnapshot;
    }
    m_root = m_snapshots.IsEmpty() ? directory : m_snapshots.PathOf(directory);
    const auto information = ReadInformation(Join(m_root, L""));
    if (!information) {
        return LastReason();
    }
    if (!information->IsDirectory()) {
        return L"it is a file, not a directory";
    }
    return std::nullopt;
}

std::wstring SourcePaths::Live(const std::wstring& name) const
{
    return Join(m_directory, name);
}

bool SourcePaths::Covers(const std::wstring& name) const
{
    return m_snapshots.IsEmpty() || m_snapshots.Covers(Live(name));
}

} // namespace agent
