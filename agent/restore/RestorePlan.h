// What a restore is to do, file by file, before anything is touched.

#pragma once

#include "agent/backup/Manifest.h"
#include "agent/console/Report.h"
#include "agent/restore/RestoreOptions.h"

#include <string>
#include <vector>

namespace agent {

struct RestoreStep {
    std::wstring source; // in the backup
    std::wstring directory;
    std::wstring target; // in `directory`
    bool mapped = false;
    bool replaces = false; // a file is there already
    ManifestFile file;
};

struct RestorePlan {
    std::vector<std::wstring> directories;
    std::vector<RestoreStep> steps;
};

// Failures and skipped files go to the report. `unfinished` is a file that an earlier restore left half-written: it is
// replaced whatever the options say.
RestorePlan PlanRestore(const RestoreOptions& options, const std::wstring& backup, const ReadManifest& loaded,
                        const std::wstring& unfinished, Report& report);

} // namespace agent
