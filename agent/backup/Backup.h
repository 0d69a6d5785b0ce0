// A backup: a new version of a tree.

#pragma once

#include "agent/backup/Manifest.h"
#include "agent/backup/Snapshots.h"
#include "agent/backup/SourceTree.h"
#include "agent/backup/Versions.h"
#include "agent/console/Report.h"

#include <string>
#include <vector>

namespace agent {

struct BackupOptions {
    std::wstring directory;
    std::wstring target;
    std::wstring filter = L"*";
    std::vector<std::wstring> snapshots; // VOLUME=DEVICE
};

class Backup {
public:
    explicit Backup(const BackupOptions& options);

    // @return the exit code.
    int Run();

private:
    bool CanStart();
    void CopyTree();
    void CopyFiles(const std::vector<std::wstring>& files);
    std::int64_t CopyFile(const std::wstring& name);
    bool IsCovered(const std::wstring& live) const;
    std::wstring SourceOf(const std::wstring& live) const;
    bool Ensure(const std::wstring& directory);
    void Fail(const std::wstring& subject, const std::wstring& reason);

    std::wstring m_source;
    std::wstring m_target;
    const BackupOptions& m_options;
    Snapshots m_snapshots;
    Version m_version;
    Manifest m_manifest;
    Report m_report{"backup"};
};

} // namespace agent
