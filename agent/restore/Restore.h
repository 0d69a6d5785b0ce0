// A restore: the files of a version go to their own places or to others.

#pragma once

#include "agent/backup/Versions.h"
#include "agent/console/Report.h"
#include "agent/restore/Replacement.h"
#include "agent/restore/RestoreOptions.h"
#include "agent/restore/RestorePlan.h"
#include "agent/restore/TargetDirectories.h"

#include <string>
#include <vector>

namespace agent {

class Restore {
public:
    // `options` must outlive this.
    explicit Restore(const RestoreOptions& options) : m_options(options) {}

    // @return the exit code.
    int Run();

private:
    bool CanStart();
    void RestoreVersion(const LoadedVersion& version);
    void Execute(const RestorePlan& plan);
    void CreateDirectories(const RestorePlan& plan, const DirectorySet& withFiles);
    void RestoreFiles(const RestorePlan& plan, RestoreRecord& record, RebootReplacement& reboot);
    bool Prepare(const RestorePlan& plan, const RestoreStep& step);
    void CountFile(const RestoreStep& step, const ReplacementResult& result);
    void GiveOwners();
    void ReportMissingSecurity(const RestorePlan& plan);

    const RestoreOptions& m_options;
    Report m_report{"restore"};
    TargetDirectories m_directories;
    DirectorySet m_failedDirectories;
    std::vector<std::wstring> m_written; // restored files that are in no directory created by this restore
};

} // namespace agent
