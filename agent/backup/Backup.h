// A backup: a new version of a tree.

#pragma once

#include "agent/backup/CopyRun.h"
#include "agent/backup/FormerVersion.h"
#include "agent/backup/Manifest.h"
#include "agent/backup/Selection.h"
#include "agent/backup/SourcePaths.h"
#include "agent/backup/SourceTree.h"
#include "agent/backup/StoredNames.h"
#include "agent/backup/Versions.h"
#include "agent/console/Report.h"

#include <string>
#include <vector>

namespace agent {

struct BackupOptions {
    std::wstring directory;
    std::wstring target;
    Selection selection;
    std::vector<std::wstring> snapshots; // VOLUME=DEVICE
    CopyOptions copy;
    int keep = 0; // complete versions; 0: all
};

class Backup {
public:
    explicit Backup(const BackupOptions& options);

    // @return the exit code.
    int Run();

private:
    void SetRows();
    bool CanStart();
    [[nodiscard]] bool IsOtherDirectory() const;
    void Execute();
    bool IsWorthAVersion(const SourceTree& tree);
    bool BeginVersion();
    void ReportTree(const SourceTree& tree);
    void CopyTree(const SourceTree& tree);
    std::vector<TreeEntry> CreateDirectories(const SourceTree& tree, StoredNames& names);
    void FailDirectory(const std::wstring& path, const std::wstring& name, std::vector<TreeEntry>& files);
    ManifestDirectory Describe(const TreeEntry& directory);
    void DescribeRoot();
    void CountRemoved(const SourceTree& tree);
    void FinishVersion();

    const BackupOptions& m_options;
    std::wstring m_source;
    std::wstring m_target;
    SourcePaths m_paths;
    FormerVersion m_former;
    Version m_version;
    Manifest m_manifest;
    Report m_report{"backup"};
};

} // namespace agent
