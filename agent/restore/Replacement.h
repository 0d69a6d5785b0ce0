// Putting a backup's content in the place of a live file, now or at the next restart.

#pragma once

#include "agent/backup/Manifest.h"
#include "agent/restore/RestoreJournal.h"

#include <string>

namespace agent {

constexpr const wchar_t* kRestorePrefix = L"kvr"; // of the cache files that wait for a restart

struct ReplacementResult {
    enum class Outcome { kNow, kAtRestart, kFailed };

    Outcome outcome = Outcome::kFailed;
    std::wstring reason;  // of a failure
    std::wstring written; // the target, or the cache file that takes its place at the restart
};

class Replacement {
public:
    // `sites` are written into the journal with each target.
    Replacement(const RestoreJournal& journal, bool temporaryCache, std::vector<CacheSite> sites);

    // Copies `source` over `target` and checks the result against the digest. A file in use is replaced at the next
    // restart, through a cache file on its own volume.
    ReplacementResult Replace(const std::wstring& source, const std::wstring& target, const ManifestFile& file);

private:
    ReplacementResult ReplaceNow(const std::wstring& source, const std::wstring& target, const ManifestFile& file);
    ReplacementResult ReplaceAtRestart(const std::wstring& source, const std::wstring& target,
                                       const ManifestFile& file);
    bool WriteJournal(const std::wstring& target, const std::vector<std::wstring>& cacheDirectories);

    const RestoreJournal& m_journal;
    bool m_temporaryCache;
    std::vector<CacheSite> m_sites;
};

} // namespace agent
