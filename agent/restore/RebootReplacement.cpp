// Files that other programs have open.

#include "agent/restore/RebootReplacement.h"

#include "agent/platform/Errors.h"
#include "agent/platform/Paths.h"
#include "agent/platform/Volumes.h"
#include "agent/restore/KeptProperties.h"

#include <Kestrovane.h>

namespace agent {

namespace {

// A cache file is deleted at the end of the scope, or at the next reboot, unless it is kept.
class CacheFile {
public:
    CacheFile(const std::wstring& target, bool temporary)
    {
        if (!CreateCacheFile(target, m_path, kCacheFilePrefix, temporary, false)) {
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

    [[nodiscard]] const std::wstring& Path() const { return m_path; }
    [[nodiscard]] DWORD Error() const { return m_error; } // 0 when the file was created
    void Keep() { m_kept = true; }

private:
    std::wstring m_path;
    DWORD m_error = ERROR_SUCCESS;
    bool m_kept = false;
};

RebootReplacement::Result Failed(const RestoreStep& step, const std::wstring& reason)
{
    return {{}, RestoreFailure{step.target.path, L"the file is in use, and " + reason}};
}

} // namespace

RebootReplacement::RebootReplacement(RestoreRecord& record, bool temporaryCache)
    : m_record(record), m_temporaryCache(temporaryCache)
{
    const auto moves = ReadPendingMoves();
    if (!moves) {
        m_problem = LastReason();
        return;
    }
    for (const PendingMove& move : *moves) {
        if (IsOwn(move)) {
            m_earlier.emplace(move.target, move);
        }
    }
}

RebootReplacement::Result RebootReplacement::Register(const RestoreStep& step, DWORD attributes)
{
    // Windows would register a move on a share or between volumes, and do nothing at the reboot.
    if (IsOnShare(step.target.path)) {
        return Failed(step, L"on a share nothing can be replaced at a reboot");
    }
    Result result = Fill(step, attributes);
    if (!result.cacheFile.empty()) {
        if (const auto reason = TakeBackEarlier(step.target.path)) {
            result.failure = RestoreFailure{step.target.path, *reason};
        }
    }
    return result;
}

// The cache file is registered by now: what is missing is told, and the replacement stays.
RebootReplacement::Result RebootReplacement::WithInformation(const RestoreStep& step, const std::wstring& cacheFile,
                                                             DWORD attributes)
{
    Result result{cacheFile, std::nullopt};
    if (!SetInformation(cacheFile, step.file.created, step.file.modified, attributes)) {
        result.failure = {step.target.path, L"its times and attributes could not be restored: " + LastReason()};
    }
    return result;
}

RebootReplacement::Result RebootReplacement::Fill(const RestoreStep& step, DWORD attributes)
{
    std::wstring target = step.target.path;
    const bool temporary = m_temporaryCache && IsSameVolume(TemporaryDirectory(), target);
    m_record.NoteCacheDirectory(temporary ? TemporaryDirectory() : step.target.directory);
    CacheFile cache(target, temporary);
    if (cache.Error() != ERROR_SUCCESS) {
        return Failed(step, L"no cache file can be created: " + SystemReason(cache.Error()));
    }
    m_record.NoteCacheFile(cache.Path());
    if (!IsSameVolume(cache.Path(), target)) {
        return Failed(step, L"its cache file " + cache.Path() + L" is on another volume");
    }
    if (auto failure = FillCacheFile(cache.Path(), step.source, step.file, target)) {
        return {{}, std::move(failure)};
    }
    if (const auto lost = KeepProperties(target, cache.Path())) {
        return Failed(step, *lost);
    }
    if (!MoveCacheFile(cache.Path(), target)) {
        return Failed(step, L"its replacement cannot be registered, which takes an administrator: " + LastReason());
    }
    cache.Keep();
    return WithInformation(step, cache.Path(), attributes);
}

std::optional<std::wstring> RebootReplacement::TakeBackEarlier(const std::wstring& target)
{
    const auto [first, last] = m_earlier.equal_range(target);
    if (first == last) {
        return std::nullopt;
    }
    std::vector<PendingMove> moves;
    for (auto earlier = first; earlier != last; ++earlier) {
        moves.push_back(earlier->second);
    }
    m_earlier.erase(first, last);
    if (const auto reason = TakeBack(moves)) {
        return L"an earlier restore has registered its replacement for the reboot, which cannot be taken back: " +
               *reason;
    }
    return std::nullopt;
}

} // namespace agent
