// The path under which a live file is reached inside the snapshot of its volume.

#include <Kestrovane.h>

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <exception>
#include <string_view>

namespace {

constexpr std::size_t kDriveRootLength = 3; // characters: C:\ and the like

// `path` with a backslash at its end, in a string that is one character longer than `path` in any case.
CComBSTR WithBackslash(std::wstring_view path)
{
    CComBSTR directory(static_cast<int>(path.size()) + 1);
    wchar_t* const end = std::copy(path.begin(), path.end(), directory.m_str);
    *end = path.ends_with(L'\\') ? L'\0' : L'\\';
    return directory;
}

bool BeginsWithDriveRoot(std::wstring_view directory)
{
    return directory.size() >= kDriveRootLength && directory[1] == L':' && directory[2] == L'\\';
}

// The path of the volume or share that holds `directory`; empty when Windows knows none.
std::wstring FindVolumePath(const CComBSTR& directory)
{
    const unsigned int room = directory.Length();
    const CComBSTR volumePath(static_cast<int>(room));
    if (::GetVolumePathNameW(directory.m_str, volumePath.m_str, room)) {
        return volumePath.m_str;
    }
    // The terminator has no room when the path is a volume path without its backslash. Of a bare drive (C:), the volume
    // path can be told without Windows; a bare mount folder counts as a folder of its drive.
    if (::GetLastError() == ERROR_FILENAME_EXCED_RANGE && BeginsWithDriveRoot(directory.m_str)) {
        return {directory.m_str, kDriveRootLength};
    }
    return {};
}

// What the host's map calls the volume: its volume name, or, for a share, which has none, its volume path.
std::wstring SnapshotKey(const std::wstring& volumePath)
{
    wchar_t name[MAX_PATH] = {};
    return ::GetVolumeNameForVolumeMountPointW(volumePath.c_str(), name, MAX_PATH) ? name : volumePath;
}

// The part of `path` below its volume, with the backslash in front; all of it without a volume. The volume path is at most
// one character longer than `path`, its backslash.
std::wstring_view RelativePart(std::wstring_view path, const std::wstring& volumePath)
{
    // Windows may answer with more than it was given, a drive for a path without one.
    return volumePath.empty() ? path : path.substr(std::min(volumePath.size() - 1, path.size()));
}

void AppendSnapshotPath(std::wstring_view path, CComBSTR& result, std::map<std::wstring, std::wstring>& snapshots)
{
    const std::wstring volumePath = FindVolumePath(WithBackslash(path));
    // A volume without a snapshot gets an empty entry in the host's map, and nothing in front of the relative part.
    std::wstring snapshotPath = snapshots[SnapshotKey(volumePath)];
    snapshotPath += RelativePart(path, volumePath);
    // In one piece, so that a failure leaves the result as it was.
    const HRESULT appended = result.Append(snapshotPath.c_str(), static_cast<int>(snapshotPath.size()));
    if (FAILED(appended)) {
        throw CAtlException(appended);
    }
}

} // namespace

bool BuildSnapshotFilePath(const wchar_t* path, CComBSTR& result, std::map<std::wstring, std::wstring>& snapshots)
{
    try {
        AppendSnapshotPath(path == nullptr ? L"" : path, result, snapshots);
        return true;
    } catch (const std::exception&) {
        // The host knows one exception of this function, whichever string could not be allocated.
        throw CAtlException(E_OUTOFMEMORY);
    }
}
