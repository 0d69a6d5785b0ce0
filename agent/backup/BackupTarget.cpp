// The directory that holds the versions of a backup.

#include "agent/backup/BackupTarget.h"

#include "agent/backup/Versions.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Handles.h"
#include "agent/platform/Paths.h"
#include "agent/platform/TreeRemoval.h"
#include "agent/platform/Volumes.h"

#include <algorithm>

namespace agent {

namespace {

// What Windows itself keeps in the root of a volume, such as the recycle bin.
bool BelongsToTheSystem(const WIN32_FIND_DATAW& entry)
{
    constexpr DWORD kSystem = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    return (entry.dwFileAttributes & kSystem) == kSystem;
}

bool IsVersionFolder(const WIN32_FIND_DATAW& entry)
{
    const FileInformation information = InformationOf(entry);
    return information.IsDirectory() && !information.IsLink() && IsVersionName(entry.cFileName);
}

bool IsComplete(const Version& version)
{
    std::wstring error;
    const auto read = LoadManifest(version.folder, error);
    return read && read->manifest.complete;
}

// Without its manifest a version no longer counts, so one that is removed in part is never taken for a whole one.
std::optional<std::wstring> RemoveVersion(const Version& version)
{
    const std::wstring manifest = Join(version.folder, kManifestName);
    if (!::DeleteFileW(manifest.c_str())) {
        return manifest + L": " + LastReason();
    }
    return RemoveTree(version.folder);
}

} // namespace

std::optional<std::wstring> WhyTargetIsRejected(const std::wstring& target)
{
    const auto information = ReadInformation(target);
    if (!information) {
        return std::nullopt;
    }
    if (!information->IsDirectory()) {
        return L"it is a file, not a directory";
    }
    WIN32_FIND_DATAW entry = {};
    const UniqueSearch search = OwnSearch(::FindFirstFileW(Join(target, L"*").c_str(), &entry));
    for (bool found = search != nullptr; found; found = ::FindNextFileW(search.get(), &entry) != FALSE) {
        const std::wstring name = entry.cFileName;
        if (name != L"." && name != L".." && !IsVersionFolder(entry) &&
            !(BelongsToTheSystem(entry) && IsVolumeRoot(target))) {
            return L"it holds " + name +
                   L", which is no version of a backup; a target must be empty, missing, or hold nothing but versions";
        }
    }
    return std::nullopt;
}

void RemoveOldVersions(const std::wstring& target, std::size_t keep, Report& report)
{
    std::vector<Version> complete = ListVersions(target);
    std::erase_if(complete, [](const Version& version) { return !IsComplete(version); });
    complete.resize(complete.size() - std::min(complete.size(), std::max<std::size_t>(keep, 1)));
    report.Set("removedVersions", 0);
    for (const Version& version : complete) {
        if (const auto reason = RemoveVersion(version)) {
            report.Fail(version.folder, L"the old version cannot be removed: " + *reason);
        } else {
            report.Count("removedVersions");
        }
    }
}

} // namespace agent
