// The versions of a backup: one folder each below the target, named after its time.

#include "agent/backup/Versions.h"

#include "agent/platform/FileInformation.h"
#include "agent/platform/Handles.h"
#include "agent/platform/Paths.h"
#include "agent/platform/Times.h"

#include <algorithm>
#include <string_view>

namespace agent {

namespace {

constexpr std::wstring_view kForm = L"dddd-dd-ddTdd-dd-ddZ"; // d: a digit
constexpr std::wstring_view kSuffixForm = L"-ddd";           // of versions that begin in the same second
constexpr int kMostInASecond = 999;

bool HasForm(std::wstring_view name, std::wstring_view form)
{
    return std::equal(name.begin(), name.end(), form.begin(), form.end(), [](wchar_t character, wchar_t expected) {
        return expected == L'd' ? character >= L'0' && character <= L'9' : character == expected;
    });
}

std::wstring WithSuffix(const std::wstring& time, int number)
{
    constexpr std::size_t kDigits = 3;
    const std::wstring digits = std::to_wstring(number);
    return time + L'-' + std::wstring(kDigits - digits.size(), L'0') + digits;
}

// The first name to try. After the clock was set back, the new version must still be the newest.
std::wstring FirstName(const std::wstring& newest)
{
    std::wstring now = FormatUtc(Now());
    std::replace(now.begin(), now.end(), L':', L'-'); // Windows allows no colon in a name
    return newest < now ? now : newest;
}

std::optional<LoadedVersion> Load(const Version& version, VersionError& error)
{
    error.subject = Join(version.folder, kManifestName);
    auto read = LoadManifest(version.folder, error.reason);
    if (!read) {
        return std::nullopt;
    }
    return LoadedVersion{version, std::move(*read)};
}

std::optional<LoadedVersion> FindNewest(const std::vector<Version>& versions, VersionError& error)
{
    std::optional<LoadedVersion> incomplete;
    const std::vector<Version> newestFirst(versions.rbegin(), versions.rend());
    for (const Version& version : newestFirst) {
        auto loaded = Load(version, error);
        if (loaded && loaded->read.manifest.complete) {
            return loaded;
        }
        if (!incomplete) {
            incomplete = std::move(loaded);
        }
    }
    return incomplete;
}

} // namespace

bool IsVersionName(const std::wstring& name)
{
    const std::wstring_view time = std::wstring_view(name).substr(0, kForm.size());
    const std::wstring_view suffix = std::wstring_view(name).substr(time.size());
    return HasForm(time, kForm) && (suffix.empty() || HasForm(suffix, kSuffixForm));
}

std::vector<Version> ListVersions(const std::wstring& target)
{
    std::vector<Version> versions;
    WIN32_FIND_DATAW entry = {};
    const UniqueSearch search = OwnSearch(::FindFirstFileW(Join(target, L"*").c_str(), &entry));
    for (bool found = search != nullptr; found; found = ::FindNextFileW(search.get(), &entry) != FALSE) {
        const FileInformation information = InformationOf(entry);
        if (information.IsDirectory() && !information.IsLink() && IsVersionName(entry.cFileName)) {
            versions.push_back({entry.cFileName, Join(target, entry.cFileName)});
        }
    }
    std::sort(versions.begin(), versions.end(), [](const Version& a, const Version& b) { return a.name < b.name; });
    return versions;
}

std::optional<LoadedVersion> FindVersion(const std::wstring& target, const std::wstring& at, VersionError& error)
{
    if (!at.empty() && !IsVersionName(at)) {
        error = {Join(target, at), L"this is not the name of a version; `versions` lists them"};
        return std::nullopt;
    }
    if (!at.empty()) {
        return Load({at, Join(target, at)}, error);
    }
    const std::vector<Version> versions = ListVersions(target);
    auto newest = FindNewest(versions, error);
    return newest || !versions.empty() ? std::move(newest) : Load({L"", target}, error);
}

std::optional<Version> CreateVersion(const std::wstring& target)
{
    const std::vector<Version> versions = ListVersions(target);
    const std::wstring first = FirstName(versions.empty() ? L"" : versions.back().name);
    const std::wstring time = first.substr(0, kForm.size());
    for (int number = 1; number <= kMostInASecond; ++number) {
        const std::wstring name = number == 1 ? time : WithSuffix(time, number);
        const std::wstring folder = Join(target, name);
        if (!versions.empty() && name <= versions.back().name) {
            continue;
        }
        if (::CreateDirectoryW(folder.c_str(), nullptr)) {
            return Version{name, folder};
        }
        if (::GetLastError() != ERROR_ALREADY_EXISTS) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace agent
