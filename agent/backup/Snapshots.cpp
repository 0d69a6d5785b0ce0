// Reading files from the snapshots of their volumes.

#include "agent/backup/Snapshots.h"

#include "agent/platform/FileInformation.h"

#include <Kestrovane.h>

namespace agent {

namespace {

// The key that the library looks a path's volume up by: the name of a local volume, the path of a share.
std::wstring KeyOf(const std::wstring& volumePath)
{
    wchar_t name[MAX_PATH] = {};
    return ::GetVolumeNameForVolumeMountPointW(volumePath.c_str(), name, MAX_PATH) ? name : volumePath;
}

std::wstring KeyOfPath(const std::wstring& path)
{
    std::wstring volume(path.size() + MAX_PATH, L'\0');
    if (!::GetVolumePathNameW(path.c_str(), volume.data(), static_cast<DWORD>(volume.size()))) {
        return {};
    }
    return KeyOf(volume.substr(0, volume.find(L'\0')));
}

} // namespace

std::optional<std::wstring> Snapshots::Add(const std::vector<std::wstring>& values)
{
    for (const std::wstring& value : values) {
        const auto equals = value.find(L'=');
        if (equals == 0 || equals == std::wstring::npos || equals + 1 == value.size()) {
            return value + L" is not VOLUME=DEVICE";
        }
        std::wstring device = value.substr(equals + 1);
        while (device.ends_with(L'\\')) {
            device.pop_back(); // the library appends the path as it is
        }
        if (!IsDirectoryOnDevice(device)) {
            return L"the snapshot device " + device + L" cannot be opened";
        }
        m_devices[KeyOf(AppendBackslash(value.substr(0, equals)))] = device;
    }
    return std::nullopt;
}

bool Snapshots::Covers(const std::wstring& path) const
{
    return m_devices.contains(KeyOfPath(path));
}

std::wstring Snapshots::PathOf(const std::wstring& path) const
{
    std::map<std::wstring, std::wstring> devices = m_devices; // the library adds the keys that it misses
    CComBSTR result;
    BuildSnapshotFilePath(path.c_str(), result, devices);
    std::wstring inSnapshot = result.m_str == nullptr ? L"" : result.m_str;
    for (const auto& [key, device] : m_devices) {
        if (inSnapshot == device) {
            inSnapshot += L'\\';
        }
    }
    return inSnapshot;
}

} // namespace agent
