// Directories that no command deletes.

#include "agent/platform/ProtectedDirectories.h"

#include "agent/platform/FileInformation.h"
#include "agent/platform/Handles.h"
#include "agent/platform/Paths.h"
#include "agent/platform/Volumes.h"

#include <Kestrovane.h>

#include <algorithm>
#include <vector>

namespace agent {

namespace {

constexpr std::size_t kLongestPath = 32767; // characters

// The path without links, short names and prefixes in it; empty where Windows cannot tell it.
std::wstring FinalPath(const std::wstring& directory)
{
    const UniqueHandle handle = Own(
        ::CreateFileW(directory.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    std::wstring path(kLongestPath, L'\0');
    path.resize(::GetFinalPathNameByHandleW(handle.get(), path.data(), static_cast<DWORD>(path.size()), 0));
    return WithoutLongPrefix(path);
}

std::wstring WindowsDirectory()
{
    wchar_t windows[MAX_PATH] = {};
    ::GetWindowsDirectoryW(windows, MAX_PATH);
    return windows;
}

// The identities of a directory and of all directories that hold it.
std::vector<FileIdentity> Lineage(const std::wstring& directory)
{
    std::vector<FileIdentity> identities;
    std::wstring path = directory;
    while (!path.empty()) {
        if (const auto identity = ReadIdentity(Join(path, L""))) {
            identities.push_back(*identity);
        }
        const std::wstring parent = ParentOf(path);
        path = parent == path ? L"" : parent;
    }
    return identities;
}

bool Contains(const std::vector<FileIdentity>& identities, const FileIdentity& identity)
{
    return std::find(identities.begin(), identities.end(), identity) != identities.end();
}

bool IsRootOfAnyVolume(const FileIdentity& identity)
{
    const std::vector<std::wstring> roots = EnumVolumes();
    return std::any_of(roots.begin(), roots.end(),
                       [&](const std::wstring& root) { return ReadIdentity(root) == identity; });
}

} // namespace

std::optional<std::wstring> WhyProtected(const std::wstring& directory)
{
    const auto identity = ReadIdentity(directory);
    const std::wstring path = FinalPath(directory);
    if (!identity || path.empty()) {
        return L"Windows does not tell which directory this is, so it is not deleted";
    }
    if (IsVolumeRoot(directory) || IsVolumeRoot(path) || IsRootOfAnyVolume(*identity)) {
        return L"the root of a volume is never deleted";
    }
    const std::wstring windows = WindowsDirectory();
    const auto windowsIdentity = ReadIdentity(windows);
    const bool isInWindows = windowsIdentity && Contains(Lineage(path), *windowsIdentity);
    if (isInWindows || Contains(Lineage(windows), *identity) || IsSameOrBelow(path, windows)) {
        return L"the Windows directory is never deleted, nor what holds it or lies in it";
    }
    return std::nullopt;
}

} // namespace agent
