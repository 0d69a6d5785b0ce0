// What a restore is in the middle of, so that the next one can tell which file a killed restore left unfinished, and find
// the cache files that it left without a registration.

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace agent {

// Where cache files are about to be made, and what was there before: all else with the prefix is left over.
struct CacheSite {
    std::wstring directory;
    std::wstring prefix;
    std::vector<std::wstring> before; // names
};

// The files with the prefix of cache files in a directory, as they are now.
CacheSite SurveyCacheSite(const std::wstring& directory, const std::wstring& prefix);

struct JournalEntry {
    std::wstring target; // the file that is being replaced; empty between two files
    std::vector<CacheSite> sites;
};

// The journal lies in the backup. Each write replaces the one before; a write that a kill tears counts as none, because
// nothing has been touched by then.
class RestoreJournal {
public:
    explicit RestoreJournal(const std::wstring& backup);

    // What an earlier restore left.
    std::optional<JournalEntry> Read() const;

    bool Write(const JournalEntry& entry) const;
    void Remove() const;

private:
    std::wstring m_path;
};

// The cache files that are left over at a site: neither there before nor registered for the next restart.
std::vector<std::wstring> FindLeftovers(const CacheSite& site);

} // namespace agent
