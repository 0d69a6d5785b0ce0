// Putting a backup's content in the place of a live file.

#include "agent/restore/Replacement.h"

#include "agent/platform/Errors.h"
#include "agent/platform/FileInformation.h"
#include "agent/platform/Paths.h"
#include "agent/platform/Volumes.h"

#include <Kestrovane.h>

namespace agent {

namespace {

using Outcome = ReplacementResult::Outcome;

ReplacementResult Failed(const std::wstring& reason)
{
    return {Outcome::kFailed, reason, {}};
}

bool Matches(const std::wstring& path, const FileDigest& digest)
{
    const auto found = DigestFile(path);
    return found && *found == digest;
}

// A cache file that is deleted at the end of the scope, or at the next restart, unless it is kept.
class CacheFile {
public:
    CacheFile(const std::wstring& target, bool temporary)
    {
        if (!CreateCacheFile(target, m_path, kRestorePrefix, temporary, false)) {
            m_error = ::GetLastError();
        }
    }
    ~CacheFile()
    {
        if (!m_kept && !m_path.empty()) {
            std::vector<std::wstring> paths = {m_path};
            DeleteCacheFileList(paths);
        }
    }
    CacheFile(const CacheFile&) = delete;
    CacheFile& operator=(const CacheFile&) = delete;

    const std::wstring& Path() const { return m_path; }
    DWORD Error() const { return m_error; } // 0 when the file was made
    void Keep() { m_kept = true; }

private:
    std::wstring m_path;
    DWORD m_error = ERROR_SUCCESS;
    bool m_kept = false;
};

} // namespace

Replacement::Replacement(const RestoreJournal& journal, bool temporaryCache, std::vector<CacheSite> sites)
    : m_journal(journal), m_temporaryCache(temporaryCache), m_sites(std::move(sites))
{
}

ReplacementResult Replacement::Replace(const std::wstring& source, const std::wstring& target, const ManifestFile& file)
{
    std::wstring asked = target;
    return IsCanReplaceFile(asked) ? ReplaceNow(source, target, file) : ReplaceAtRestart(source, target, file);
}

bool Replacement::WriteJournal(const std::wstring& target, const std::vector<std::wstring>& cacheDirectories)
{
    JournalEntry entry{target, m_sites};
    for (const std::wstring& directory : cacheDirectories) {
        entry.sites.push_back(SurveyCacheSite(directory, kRestorePrefix));
    }
    return m_journal.Write(entry);
}

ReplacementResult Replacement::ReplaceNow(const std::wstring& source, const std::wstring& target,
                                          const ManifestFile& file)
{
    WriteJournal(target, {});
    if (DoCopyComponentFile(source, target) == 0) {
        const DWORD error = ::GetLastError();
        const bool refused = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
        // A copy that failed once the target was open has already cut it.
        const bool cut = !refused && ReadInformation(target).has_value() && !Matches(target, file.digest);
        return Failed(SystemReason(error) + (cut ? L"; the file is incomplete" : L""));
    }
    // The copy ends with success also when a read error cuts it short.
    if (!Matches(target, file.digest)) {
        return Failed(L"the file was written, but it is incomplete");
    }
    SetTimes(target, 0, file.modified);
    return {Outcome::kNow, {}, target};
}

ReplacementResult Replacement::ReplaceAtRestart(const std::wstring& source, const std::wstring& target,
                                                const ManifestFile& file)
{
    // Windows would register a move on a share or between volumes, and do nothing at the restart.
    if (IsOnShare(target)) {
        return Failed(L"the file is in use, and on a share nothing can be replaced at a restart");
    }
    const std::wstring beside = ParentOf(target);
    const bool temporary = m_temporaryCache && IsSameVolume(TemporaryDirectory(), target);
    WriteJournal({}, {temporary ? TemporaryDirectory() : beside});
    CacheFile cache(target, temporary);
    if (cache.Error() != ERROR_SUCCESS) {
        return Failed(L"the file is in use, and no cache file can be made: " + SystemReason(cache.Error()));
    }
    if (!IsSameVolume(cache.Path(), target)) {
        return Failed(L"the file is in use, and its cache file " + cache.Path() + L" is on another volume");
    }
    if (DoCopyComponentFile(source, cache.Path()) == 0 || !Matches(cache.Path(), file.digest)) {
        return Failed(L"the file is in use, and its cache file cannot be filled: " + LastReason());
    }
    SetTimes(cache.Path(), 0, file.modified);
    std::wstring asked = target;
    if (!MoveCacheFile(cache.Path(), asked)) {
        return Failed(L"the file is in use, and its replacement cannot be registered, which takes an administrator: " +
                      LastReason());
    }
    cache.Keep();
    return {Outcome::kAtRestart, {}, cache.Path()};
}

} // namespace agent
