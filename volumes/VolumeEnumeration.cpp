// Enumeration of the mount paths of all volumes.

#include <Kestrovane.h>

#include "volumes/HardDiskManager.h"
#include "win32/HResult.h"
#include "win32/UniqueResource.h"

#include <windows.h>

namespace {

constexpr DWORD kNameCapacity = 1024; // characters

[[noreturn]] void ThrowLastError()
{
    throw HResultFromWin32(::GetLastError());
}

// Kept for compatibility: a step of the enumeration whose result is not used.
std::wstring ResolveUniqueName(const wchar_t* name)
{
    std::wstring unique = GetUniqueVolumeNameForPath(name);
    return GetUniqueVolumeNameForPathNoThrow(name, unique) ? unique : name;
}

void AddMountPaths(const wchar_t* name, std::vector<std::wstring>& paths)
{
    static_cast<void>(ResolveUniqueName(name));
    for (const std::wstring& path : g_hardDiskManager.GetVolumePathNames(name)) {
        if (!FindStringInList(path, paths)) {
            paths.push_back(path);
        }
    }
}

// Throws the HRESULT of the first Win32 failure; `paths` then holds what was found before.
void AddAllVolumes(UniqueFindHandle& search, std::vector<std::wstring>& paths)
{
    wchar_t name[kNameCapacity + 1] = {}; // one more than Windows may fill
    search.Reset(::FindFirstVolumeW(name, kNameCapacity));
    if (!search) {
        ThrowLastError();
    }
    do {
        AddMountPaths(name, paths);
    } while (::FindNextVolumeW(search.Get(), name, kNameCapacity));
    if (::GetLastError() != ERROR_NO_MORE_FILES) {
        ThrowLastError();
    }
    if (!::FindVolumeClose(search.Get())) {
        ThrowLastError();
    }
    search.Release();
}

} // namespace

std::vector<std::wstring> EnumVolumes()
{
    std::vector<std::wstring> paths;
    // After a failure, an open search is deliberately closed by FindClose, even if FindVolumeClose has just failed.
    UniqueFindHandle search;
    try {
        AddAllVolumes(search, paths);
    } catch (...) { // NOLINT(bugprone-empty-catch): best effort, the paths found so far are returned
    }
    return paths;
}
