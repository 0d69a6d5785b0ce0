// Copies of the live files that a restore is about to overwrite.

#include "agent/restore/LiveProtection.h"

#include "agent/platform/Digest.h"
#include "agent/platform/Errors.h"
#include "agent/platform/IgnoringCase.h"
#include "agent/platform/Paths.h"
#include "agent/platform/Volumes.h"

#include <Kestrovane.h>

#include <algorithm>

namespace agent {

namespace {

constexpr const wchar_t* kPrefix = L"kvp";

} // namespace

LiveProtection::LiveProtection()
{
    m_site = SurveyCacheSite(TemporaryDirectory(), kPrefix);
}

std::wstring LiveProtection::Protect(const std::wstring& liveFile)
{
    if (!CreateCacheFileList({liveFile}, L'\0', kPrefix, true, m_copies, true)) {
        std::wstring reason = LastReason();
        DropLeftover();
        return reason;
    }
    // The copy ends with success also when a read error cuts it short.
    const auto copy = m_copies.find(WString2UpperCase(liveFile));
    const auto original = DigestFile(liveFile);
    if (!original || original != DigestFile(copy->second)) {
        std::vector<std::wstring> paths = {copy->second};
        DeleteCacheFileList(paths);
        m_copies.erase(copy);
        return L"its copy differs from it";
    }
    return {};
}

// A failed copy leaves a cache file that no map names.
void LiveProtection::DropLeftover()
{
    std::vector<std::wstring> leftovers = FindLeftovers(m_site);
    std::erase_if(leftovers, [this](const std::wstring& path) {
        return std::any_of(m_copies.begin(), m_copies.end(),
                           [&](const auto& pair) { return EqualIgnoringCase(pair.second, path); });
    });
    DeleteCacheFileList(leftovers);
}

bool LiveProtection::Holds(const std::wstring& liveFile) const
{
    return m_copies.contains(WString2UpperCase(liveFile));
}

LiveProtection::Outcome LiveProtection::PutBack(const std::wstring& liveFile)
{
    const auto copy = m_copies.find(WString2UpperCase(liveFile));
    std::map<std::wstring, std::wstring> one = {*copy};
    const std::wstring beside = Join(ParentOf(liveFile), GetFileName(copy->second));
    if (RestoreFileListCache(one)) {
        if (::MoveFileExW(beside.c_str(), liveFile.c_str(), MOVEFILE_REPLACE_EXISTING)) {
            return Outcome::kNow;
        }
        std::wstring target = liveFile;
        if (!IsOnShare(liveFile) && MoveCacheFile(beside, target)) {
            return Outcome::kAtRestart;
        }
    }
    std::vector<std::wstring> unfinished = {beside};
    DeleteCacheFileList(unfinished);
    m_kept.insert(*copy);
    return Outcome::kFailed;
}

std::size_t LiveProtection::DropCopies()
{
    for (const auto& [liveFile, copy] : m_kept) {
        m_copies.erase(liveFile);
    }
    DeleteCacheFileList(m_copies, L'\0');
    m_copies.clear();
    return m_kept.size();
}

} // namespace agent
