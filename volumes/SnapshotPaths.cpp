// The path of a live file inside the snapshot of its volume.

#include <Kestrovane.h>

#include "win32/Bstr.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <string_view>

namespace {

constexpr std::size_t kDriveRootLength = 3; // characters: C:\ and the like

// Returns `path` with a trailing backslash, in a string that is one character longer than `path` in any case.
CComBSTR WithBackslash(std::wstring_view path)
{
    CComBSTR directory = ZeroedBstr(path.size() + 1);
    wchar_t* const end = std::copy(path.begin(), path.end(), directory.m_str);
    if (!path.ends_with(L'\\')) {
        *end = L'\\';
    }
    return directory;
}

bool BeginsWithDriveRoot(std::wstring_view directory)
{
    return directory.size() >= kDriveRootLength && directory[1] == L':' && directory[2] == L'\\';
}

// Writes the path of the volume or share that contains `directory`, which ends with a backslash, into `volumePath`, a
// buffer of the same length. Leaves the buffer empty if Windows knows no such volume.
void QueryVolumePathInto(const CComBSTR& directory, const CComBSTR& volumePath)
{
    const unsigned int capacity = directory.Length();
    if (::GetVolumePathNameW(directory.m_str, volumePath.m_str, capacity)) {
        // The buffer is one character too small for a volume path that was given without its backslash. Some systems
        // then succeed with a shortened string.
        const std::size_t length = std::wcslen(volumePath.m_str);
        if (length > 0 && length < capacity && volumePath.m_str[length - 1] != L'\\') {
            volumePath.m_str[length] = L'\\';
        }
        return;
    }
    const DWORD error = ::GetLastError();
    std::fill_n(volumePath.m_str, capacity, L'\0');
    // Others fail. The volume path of a bare drive (C:) is known all the same; a bare mount folder counts as a folder
    // of its drive.
    if (error == ERROR_FILENAME_EXCED_RANGE && BeginsWithDriveRoot(directory.m_str)) {
        std::copy_n(directory.m_str, kDriveRootLength, volumePath.m_str);
    }
}

// Returns the key of the volume in the host's map: its volume name or, for a share, which has none, its volume path.
std::wstring SnapshotKey(const CComBSTR& volumePath)
{
    wchar_t name[MAX_PATH + 1] = {}; // one more than Windows may fill
    if (::GetVolumeNameForVolumeMountPointW(volumePath.m_str, name, MAX_PATH)) {
        return name;
    }
    const CComBSTR sharePath(static_cast<int>(volumePath.Length()), volumePath.m_str);
    return ToWString(sharePath);
}

// Returns the part of `path` below its volume, with its leading backslash; the whole path without a volume.
std::wstring_view RelativePart(std::wstring_view path, std::size_t volumePathLength)
{
    // Windows may return more than it was passed: a drive for a path without one.
    return volumePathLength == 0 ? path : path.substr(std::min(volumePathLength - 1, path.size()));
}

} // namespace

bool BuildSnapshotFilePath(const wchar_t* path, CComBSTR& result, std::map<std::wstring, std::wstring>& snapshots)
{
    const std::size_t length = path == nullptr ? 0 : std::wcslen(path);
    const CComBSTR directory = WithBackslash({path, length});
    const CComBSTR volumePath = ZeroedBstr(directory.Length());
    QueryVolumePathInto(directory, volumePath);
    // A missing key is deliberately added to the host's map, with an empty device.
    const std::wstring& device = snapshots[SnapshotKey(volumePath)];
    // Cut from the copy: `path` may be the string that the first append frees.
    const std::wstring_view relative = RelativePart({directory.m_str, length}, std::wcslen(volumePath.m_str));
    AppendOrThrow(result, device.c_str(), device.size());
    AppendOrThrow(result, relative.data(), relative.size());
    return true;
}
