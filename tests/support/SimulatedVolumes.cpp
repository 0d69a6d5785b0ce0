// A simulated machine with other volumes than this one: the library's volume look-ups are answered from a table.

#include "tests/support/SimulatedVolumes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>
#include <stdexcept>
#include <utility>

namespace {

SimulatedVolumes* g_volumes = nullptr;

BOOL WINAPI VolumePathFromTable(const wchar_t* path, wchar_t* buffer, DWORD capacity)
{
    return g_volumes->VolumePath(path, buffer, capacity);
}

BOOL WINAPI VolumeNameFromTable(const wchar_t* mountPoint, wchar_t* buffer, DWORD capacity)
{
    return g_volumes->VolumeName(mountPoint, buffer, capacity);
}

BOOL WINAPI MountPathsFromTable(const wchar_t* name, wchar_t* buffer, DWORD capacity, DWORD* needed)
{
    return g_volumes->MountPaths(name, buffer, capacity, needed);
}

HANDLE WINAPI FirstVolumeOfTable(wchar_t* buffer, DWORD capacity)
{
    return g_volumes->FirstVolume(buffer, capacity);
}

BOOL WINAPI NextVolumeOfTable(HANDLE search, wchar_t* buffer, DWORD capacity)
{
    return g_volumes->NextVolume(search, buffer, capacity);
}

BOOL WINAPI CloseVolumeSearch(HANDLE search)
{
    return g_volumes->CloseSearch(L"FindVolumeClose", search);
}

BOOL WINAPI CloseSearchOfAnyKind(HANDLE search)
{
    return g_volumes->CloseSearch(L"FindClose", search);
}

BOOL WINAPI SpaceFromTable(const wchar_t* path, ULARGE_INTEGER* available, ULARGE_INTEGER* total,
                           ULARGE_INTEGER* totalFree)
{
    return g_volumes->Space(path, available, total, totalFree);
}

// The one search; no handle of this process has such a value.
HANDLE SearchHandle()
{
    return reinterpret_cast<HANDLE>(ULONG_PTR{0x5EA4C3});
}

BOOL FailWith(DWORD error)
{
    ::SetLastError(error);
    return FALSE;
}

BOOL Answer(const std::wstring& text, wchar_t* buffer, DWORD capacity)
{
    if (text.size() + 1 > capacity) {
        return FailWith(ERROR_FILENAME_EXCED_RANGE);
    }
    std::wmemcpy(buffer, text.c_str(), text.size() + 1);
    return TRUE;
}

bool Same(const std::wstring& first, const std::wstring& second)
{
    return ::_wcsicmp(first.c_str(), second.c_str()) == 0;
}

// The share of \\server\share\dir\, with its trailing backslash.
std::wstring ShareOf(const std::wstring& path)
{
    const auto serverEnd = path.find(L'\\', 2);
    return path.substr(0, path.find(L'\\', serverEnd + 1) + 1);
}

} // namespace

SimulatedVolumes::SimulatedVolumes(std::vector<SimulatedVolume> volumes)
    : m_outer(std::exchange(g_volumes, this)),
      m_volumes(std::move(volumes)),
      m_volumePath("GetVolumePathNameW", &VolumePathFromTable),
      m_volumeName("GetVolumeNameForVolumeMountPointW", &VolumeNameFromTable),
      m_mountPaths("GetVolumePathNamesForVolumeNameW", &MountPathsFromTable),
      m_firstVolume("FindFirstVolumeW", &FirstVolumeOfTable),
      m_nextVolume("FindNextVolumeW", &NextVolumeOfTable),
      m_closeVolumeSearch("FindVolumeClose", &CloseVolumeSearch),
      m_closeSearch("FindClose", &CloseSearchOfAnyKind),
      m_space("GetDiskFreeSpaceExW", &SpaceFromTable)
{
}

SimulatedVolumes::~SimulatedVolumes()
{
    g_volumes = m_outer;
}

void SimulatedVolumes::Fail(const std::wstring& function, int call, DWORD error)
{
    m_faults.push_back({function, call, error, false});
}

void SimulatedVolumes::Throw(const std::wstring& function, int call)
{
    m_faults.push_back({function, call, 0, true});
}

bool SimulatedVolumes::Fails(const std::wstring& function, const std::wstring& arguments)
{
    m_calls.push_back(function + L"(" + arguments + L")");
    const int call = ++m_callCounts[function];
    for (const Fault& fault : m_faults) {
        if (fault.function != function || fault.call != call) {
            continue;
        }
        if (fault.throws) {
            throw std::runtime_error("a simulated exception");
        }
        ::SetLastError(fault.error);
        return true;
    }
    return false;
}

// The volume with the longest mount path that `path` begins with; a volume name counts as a mount path.
const SimulatedVolume* SimulatedVolumes::VolumeOf(const std::wstring& path, std::wstring& mountPath) const
{
    const SimulatedVolume* found = nullptr;
    const auto consider = [&](const SimulatedVolume& volume, const std::wstring& candidate) {
        if (Same(path.substr(0, candidate.size()), candidate) && candidate.size() > mountPath.size()) {
            mountPath = candidate;
            found = &volume;
        }
    };
    for (const SimulatedVolume& volume : m_volumes) {
        consider(volume, volume.name);
        for (const std::wstring& candidate : volume.mountPaths) {
            consider(volume, candidate);
        }
    }
    return found;
}

BOOL SimulatedVolumes::VolumePath(const wchar_t* path, wchar_t* buffer, DWORD capacity)
{
    const std::wstring asked = path;
    if (Fails(L"GetVolumePathNameW", asked + L", " + std::to_wstring(capacity))) {
        return FALSE;
    }
    if (asked.starts_with(LR"(\\)") && !asked.starts_with(LR"(\\?\)")) {
        return Answer(ShareOf(asked), buffer, capacity);
    }
    std::wstring volumePath;
    return VolumeOf(asked, volumePath) == nullptr ? FailWith(ERROR_FILE_NOT_FOUND)
                                                  : Answer(volumePath, buffer, capacity);
}

BOOL SimulatedVolumes::VolumeName(const wchar_t* mountPoint, wchar_t* buffer, DWORD capacity)
{
    const std::wstring asked = mountPoint;
    if (Fails(L"GetVolumeNameForVolumeMountPointW", asked + L", " + std::to_wstring(capacity))) {
        return FALSE;
    }
    for (const SimulatedVolume& volume : m_volumes) {
        const std::wstring& unique = volume.uniqueName.empty() ? volume.name : volume.uniqueName;
        if (Same(asked, volume.name) || Same(asked, unique)) {
            return Answer(unique, buffer, capacity);
        }
        for (const std::wstring& mountPath : volume.mountPaths) {
            if (Same(asked, mountPath)) {
                return Answer(volume.name, buffer, capacity);
            }
        }
    }
    return FailWith(ERROR_NOT_A_REPARSE_POINT);
}

BOOL SimulatedVolumes::MountPaths(const wchar_t* name, wchar_t* buffer, DWORD capacity, DWORD* needed)
{
    const std::wstring asked = name;
    if (Fails(L"GetVolumePathNamesForVolumeNameW", asked + L", " + std::to_wstring(capacity))) {
        return FALSE;
    }
    const auto volume = std::find_if(m_volumes.begin(), m_volumes.end(),
                                     [&](const SimulatedVolume& candidate) { return Same(asked, candidate.name); });
    if (volume == m_volumes.end()) {
        return FailWith(ERROR_FILE_NOT_FOUND);
    }
    std::wstring list;
    for (const std::wstring& mountPath : volume->mountPaths) {
        list += mountPath;
        list += L'\0';
    }
    list += L'\0';
    *needed = static_cast<DWORD>(list.size());
    if (list.size() > capacity) {
        return FailWith(ERROR_MORE_DATA);
    }
    std::wmemcpy(buffer, list.c_str(), list.size());
    return TRUE;
}

HANDLE SimulatedVolumes::FirstVolume(wchar_t* buffer, DWORD capacity)
{
    m_next = 0;
    if (Fails(L"FindFirstVolumeW", std::to_wstring(capacity))) {
        return INVALID_HANDLE_VALUE;
    }
    if (m_volumes.empty()) {
        ::SetLastError(ERROR_NO_MORE_FILES);
        return INVALID_HANDLE_VALUE;
    }
    m_searchOpen = true;
    Answer(m_volumes[m_next++].name, buffer, capacity);
    return SearchHandle();
}

BOOL SimulatedVolumes::NextVolume(HANDLE search, wchar_t* buffer, DWORD capacity)
{
    EXPECT_TRUE(m_searchOpen && search == SearchHandle()) << "not the handle of an open search";
    if (Fails(L"FindNextVolumeW", std::to_wstring(capacity))) {
        return FALSE;
    }
    return m_next < m_volumes.size() ? Answer(m_volumes[m_next++].name, buffer, capacity)
                                     : FailWith(ERROR_NO_MORE_FILES);
}

BOOL SimulatedVolumes::CloseSearch(const std::wstring& function, HANDLE search)
{
    EXPECT_TRUE(m_searchOpen && search == SearchHandle()) << "not the handle of an open search";
    if (Fails(function, L"")) {
        return FALSE;
    }
    m_searchOpen = false;
    return TRUE;
}

BOOL SimulatedVolumes::Space(const wchar_t* path, ULARGE_INTEGER* available, ULARGE_INTEGER* total,
                             ULARGE_INTEGER* totalFree)
{
    // What a failing call writes is nothing that may be read.
    constexpr ULONGLONG kNothing = 77000000000;
    *available = *total = *totalFree = ULARGE_INTEGER{.QuadPart = kNothing};
    if (Fails(L"GetDiskFreeSpaceExW", path)) {
        return FALSE;
    }
    std::wstring mountPath;
    const SimulatedVolume* const volume = VolumeOf(path, mountPath);
    if (volume == nullptr) {
        return FailWith(ERROR_PATH_NOT_FOUND);
    }
    available->QuadPart = volume->availableBytes;
    total->QuadPart = volume->totalBytes;
    return TRUE;
}
