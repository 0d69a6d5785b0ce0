// What a restore is to do, file by file, before anything is touched.

#pragma once

#include "agent/backup/Versions.h"
#include "agent/console/Report.h"
#include "agent/restore/Placement.h"
#include "agent/restore/RestoreOptions.h"

#include <cstdint>
#include <string>
#include <vector>

namespace agent {

struct RestoreStep {
    std::wstring source; // in the backup
    Destination target;
    ManifestFile file;
    bool replaces = false;         // a file is there already
    FileInformation present = {};  // of that file
    std::wstring stagingDirectory; // where the new content is written
};

struct DirectoryStep {
    Destination target;
    ManifestDirectory directory;
};

struct RestorePlan {
    std::vector<DirectoryStep> directories; // parents first
    std::vector<RestoreStep> steps;
    std::int64_t bytes = 0;
    bool isRejected = false; // nothing may be restored: the options do not fit the backup
};

// Failures, and files that are skipped or left out, go to the report.
RestorePlan PlanRestore(const RestoreOptions& options, const LoadedVersion& version, Report& report);

} // namespace agent
