// The files of one backup: linked where they did not change, copied where they did.

#pragma once

#include "agent/backup/FormerVersion.h"
#include "agent/backup/Manifest.h"
#include "agent/backup/StoredNames.h"
#include "agent/console/Progress.h"
#include "agent/console/Report.h"
#include "agent/platform/FileCopy.h"
#include "agent/platform/TreeWalk.h"

#include <span>
#include <string>
#include <vector>

namespace agent {

struct CopyOptions {
    bool security = false;
    int retries = 0;     // of files in use, after all others
    int waitSeconds = 0; // before each retry
};

class CopyRun {
public:
    // The copies go into `folder`. What is copied is added to the manifest and to the report.
    CopyRun(const std::wstring& folder, const FormerVersion& former, const CopyOptions& options, Manifest& manifest,
            Report& report);

    // Files whose directories exist in the folder. Ends early at an interrupt and on a full volume.
    void Copy(const std::vector<TreeEntry>& files, StoredNames& names, Progress& progress);

private:
    struct Step {
        const TreeEntry* source = nullptr;
        std::wstring stored;
        std::wstring target;
        const ManifestFile* former = nullptr;
        FileInformation before;
        bool isLinked = false;
        bool isShared = false;
    };

    [[nodiscard]] bool MustEnd() const;
    std::vector<Step> StepsFor(std::span<const TreeEntry> files, StoredNames& names) const;
    void LinkUnchanged(std::vector<Step>& steps) const;
    void LinkIfUnchanged(Step& step) const;
    void Take(Step step, Progress& progress);
    void Begin(Step step);
    void CopyStep(Step step);
    void Retry(Progress& progress);
    [[nodiscard]] bool WaitForRetry() const;
    void Record(const Step& step, const FileDigest& digest);
    void NoteStreams(const TreeEntry& source);
    void FailCopy(const Step& step, const CopyResult& result);

    const std::wstring& m_folder;
    const FormerVersion& m_former;
    const CopyOptions& m_options;
    Manifest& m_manifest;
    Report& m_report;
    int m_retriesLeft;
    bool m_isFull = false;
    std::vector<Step> m_inUse;
};

} // namespace agent
