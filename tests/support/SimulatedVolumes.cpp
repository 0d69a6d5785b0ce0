// A simulated machine with other volumes than this one: the library's volume look-ups are answered from a table.

#include "tests/support/SimulatedVolumes.h"

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
      m_mountPaths("GetVolumePathNamesForVolumeNameW", &MountPathsFromTable)
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
    const auto call = std::count_if(m_calls.begin(), m_calls.end(),
                                    [&](const std::wstring& made) { return made.starts_with(function + L"("); });
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

BOOL SimulatedVolumes::VolumePath(const wchar_t* path, wchar_t* buffer, DWORD capacity)
{
    const std::wstring asked = path;
    if (Fails(L"GetVolumePathNameW", asked + L", " + std::to_wstring(capacity))) {
        return FALSE;
    }
    if (asked.starts_with(LR"(\\)") && !asked.starts_with(LR"(\\?\)")) {
        return Answer(ShareOf(asked), buffer, capacity);
    }
    std::wstring longest;
    for (const SimulatedVolume& volume : m_volumes) {
        for (const std::wstring& mountPath : volume.mountPaths) {
            if (Same(asked.substr(0, mountPath.size()), mountPath) && mountPath.size() > longest.size()) {
                longest = mountPath;
            }
        }
    }
    return longest.empty() ? FailWith(ERROR_FILE_NOT_FOUND) : Answer(longest, buffer, capacity);
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
