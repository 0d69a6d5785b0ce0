// Enumeration of the mount paths of all volumes.

#include <Kestrovane.h>

#include "frame/FailureReport.h"
#include "frame/UniqueResource.h"
#include "volumes/HardDiskManager.h"

#include <windows.h>

namespace {

constexpr DWORD kNameRoom = 1024; // characters

[[noreturn]] void ThrowLastError()
{
    throw HResultFromWin32(::GetLastError());
}

// Part of every step of the enumeration, although its answer is not listed.
std::wstring ResolveUniqueName(const wchar_t* name)
{
    std::wstring unique = GetUniqueVolumeNameForPath(name);
    return GetUniqueVolumeNameForPathNoThrow(name, unique) ? unique : name;
}

void AddMountPaths(const wchar_t* name, std::vector<std::wstring>& paths)
{
    ResolveUniqueName(name);
    for (const std::wstring& path : g_hardDiskManager.GetVolumePathNames(name)) {
        if (!FindStringInList(path, paths)) {
            paths.push_back(path);
        }
    }
}

// Throws an HRESULT where Windows fails; `paths` holds what was found up to there.
void AddAllVolumes(UniqueFindHandle& search, std::vector<std::wstring>& paths)
{
    wchar_t name[kNameRoom] = {};
    search.Reset(::FindFirstVolumeW(name, kNameRoom));
    if (!search) {
        ThrowLastError();
    }
    do {
        AddMountPaths(name, paths);
    } while (::FindNextVolumeW(search.Get(), name, kNameRoom));
    if (::GetLastError() != ERROR_NO_MORE_FILES) {
        ThrowLastError();
    }
    if (!::FindVolumeClose(search.Get())) {
        ThrowLastError();
    }
    search.Detach();
}

} // namespace

std::vector<std::wstring> EnumVolumes()
{
    std::vector<std::wstring> paths;
    // A search that is still open after a failure is closed by FindClose on purpose, also when FindVolumeClose has
    // just failed on it.
    UniqueFindHandle search;
    try {
        AddAllVolumes(search, paths);
    } catch (...) { // best effort: what was found counts
    }
    return paths;
}
